// The audio session over a PulseAudio server.
#include "lib/platform/linux/PulseAudioSession.h"

#include <algorithm>
#include <utility>

#include "lib/platform/RunTask.h"
#include "lib/platform/linux/PulseAudioUnit.h"
#include "lib/platform/linux/PulseStream.h"

namespace lirvox::platform {
namespace {

LirvoxError failure(const std::string& description) {
  return {"PulseAudio", audioServerError, description};
}

}  // namespace

PulseAudioSession::PulseAudioSession(PulseAudioNames names)
    : names_(std::move(names)), preferredSource_(names_.source) {}

// A server mixes what applications do: it has no categories.
bool PulseAudioSession::setCategory(AudioSessionCategory, LirvoxError&) {
  return true;
}

bool PulseAudioSession::setActive(bool active, LirvoxError& error) {
  if (active) return connection(error) != nullptr;
  std::shared_ptr<PulseConnection> released;
  const MutexLock lock(mutex_);
  released.swap(connection_);
  return true;
}

std::shared_ptr<PulseConnection> PulseAudioSession::connection(LirvoxError& error) {
  std::shared_ptr<PulseConnection> lost;
  const MutexLock lock(mutex_);
  if (connection_ && connection_->isUp()) return connection_;
  lost.swap(connection_);
  if (!queue_) queue_ = current()->mainQueue;
  std::string reason;
  connection_ = PulseConnection::open(
      names_.server, names_.application,
      [weak = weak_from_this()] {
        if (const auto session = weak.lock()) session->announceRouteChange();
      },
      reason);
  if (!connection_) error = failure("No sound server: " + reason);
  return connection_;
}

std::string PulseAudioSession::preferredSource() {
  const MutexLock lock(mutex_);
  return preferredSource_;
}

std::optional<PulseSource> PulseAudioSession::currentSource() {
  LirvoxError error;
  const auto server = connection(error);
  if (!server) return std::nullopt;
  const std::string preferred = preferredSource();
  return pulseSource(*server, preferred.empty() ? pulseDefaultSource : preferred);
}

AudioSessionRoute PulseAudioSession::currentRoute() {
  AudioSessionRoute route;
  if (auto input = currentInput(); input.port) route.inputs.push_back(std::move(*input.port));
  return route;
}

std::vector<AudioSessionPort> PulseAudioSession::availableInputs() {
  std::vector<AudioSessionPort> ports;
  LirvoxError error;
  const auto server = connection(error);
  if (!server) return ports;
  for (const PulseSource& source : pulseSources(*server)) ports.push_back(source.port);
  return ports;
}

std::optional<AudioSessionDataSource> PulseAudioSession::inputDataSource() {
  return currentInput().dataSource;
}

AudioSessionInput PulseAudioSession::currentInput() {
  AudioSessionInput input;
  const auto source = currentSource();
  if (!source) return input;
  input.port = source->port;
  for (const AudioSessionDataSource& dataSource : source->port.dataSources) {
    if (dataSource.identifier == source->activeDataSource) input.dataSource = dataSource;
  }
  return input;
}

bool PulseAudioSession::setPreferredInput(const std::optional<AudioSessionPort>& port,
                                          LirvoxError& error) {
  std::string wanted;
  if (port) {
    wanted = port->uniqueIdentifier;
    const auto server = connection(error);
    if (!server) return false;
    if (!pulseSource(*server, wanted)) {
      error = failure("No such source");
      return false;
    }
    // Whoever asks for the default source is to follow it when it changes.
    if (wanted != preferredSource()) {
      const auto byDefault = pulseSource(*server, pulseDefaultSource);
      if (byDefault && byDefault->port.uniqueIdentifier == wanted) wanted.clear();
    }
  }
  {
    const MutexLock lock(mutex_);
    if (preferredSource_ == wanted) return true;
    preferredSource_ = wanted;
  }
  for (const auto& stream : streams()) stream->changeSource(wanted);
  return true;
}

bool PulseAudioSession::setInputDataSource(const AudioSessionDataSource& dataSource,
                                           LirvoxError& error) {
  const auto source = currentSource();
  const auto server = connection(error);
  if (!server) return false;
  if (source && source->activeDataSource == dataSource.identifier) return true;
  if (source && setPulseDataSource(*server, source->port.uniqueIdentifier, dataSource.identifier)) {
    return true;
  }
  error = failure(source ? server->lastError() : "No input");
  return false;
}

void PulseAudioSession::addStream(std::weak_ptr<PulseStream> stream) {
  const MutexLock lock(mutex_);
  std::erase_if(streams_, [](const auto& known) { return known.expired(); });
  streams_.push_back(std::move(stream));
}

std::vector<std::shared_ptr<PulseStream>> PulseAudioSession::streams() {
  std::vector<std::shared_ptr<PulseStream>> living;
  const MutexLock lock(mutex_);
  for (const auto& known : streams_) {
    if (auto stream = known.lock()) living.push_back(std::move(stream));
  }
  return living;
}

bool PulseAudioSession::announceInterruption(
    const AudioSessionInterruption& interruption) noexcept {
  const auto post = [weak = weak_from_this(), interruption] {
    if (const auto session = weak.lock()) session->postInterruption(interruption);
  };
  return runLogged([&] { queue_->async(post); });
}

// The server tells much that changes no route, in bursts: one look per burst is enough.
void PulseAudioSession::announceRouteChange() noexcept {
  if (routeChangePending_.exchange(true)) return;
  const auto post = [weak = weak_from_this()] {
    const auto session = weak.lock();
    if (!session) return;
    session->routeChangePending_.store(false);
    session->postRouteChange();
  };
  if (!runLogged([&] { queue_->async(post); })) routeChangePending_.store(false);
}

void usePulseAudio(Platform& platform, const PulseAudioNames& names) {
  auto session = std::make_shared<PulseAudioSession>(names);
  platform.audioSession = session;
  platform.makeInputUnit = [session](AudioStatus& status) {
    status = audioNoError;
    return std::make_unique<PulseAudioUnit>(session);
  };
}

}  // namespace lirvox::platform
