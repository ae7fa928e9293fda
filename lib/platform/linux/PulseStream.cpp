// A record stream on a PulseAudio server, and what becomes of it.
#include "lib/platform/linux/PulseStream.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>

#include "lib/platform/Platform.h"
#include "lib/platform/RunTask.h"

namespace lirvox::platform {
namespace {

constexpr AudioSessionInterruption began{AudioSessionInterruption::Type::began, 0};
constexpr AudioSessionInterruption ended{AudioSessionInterruption::Type::ended,
                                         AudioSessionInterruption::shouldResume};

void forget(pa_operation* operation) {
  if (operation) pa_operation_unref(operation);
}

std::uint64_t steadyNanoseconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(std::chrono::nanoseconds(now).count());
}

}  // namespace

PulseStream::PulseStream(std::shared_ptr<PulseAudioSession> session)
    : session_(std::move(session)) {}

PulseStream::~PulseStream() {
  close();
}

std::shared_ptr<PulseConnection> PulseStream::connection() {
  const MutexLock lock(mutex_);
  return connection_;
}

AudioStatus PulseStream::start() {
  const auto server = connection();
  if (server && server->isOwnThread()) return isRunning() ? audioNoError : audioStateError;
  const std::uint64_t stopsBefore = stops();
  const MutexLock lock(startMutex_);
  return resume() ? audioNoError : open(session_->preferredSource(), stopsBefore);
}

std::uint64_t PulseStream::stops() {
  const MutexLock lock(mutex_);
  return stops_;
}

bool PulseStream::isRunning() {
  const auto server = connection();
  if (!server) return false;
  const PulseConnection::Lock lock(*server);
  return state_ != State::closed && delivering_;
}

// Takes a stream that a suspension has stopped into use again.
bool PulseStream::resume() {
  const auto server = connection();
  if (!server) return false;
  const PulseConnection::Lock lock(*server);
  if (state_ != State::open) return false;
  if (delivering_) return true;
  delivering_ = true;
  framesSinceStart_ = 0;
  forget(pa_stream_flush(stream_, nullptr, nullptr));
  forget(pa_stream_cork(stream_, 0, nullptr, nullptr));
  return true;
}

// A stop that comes while the stream is being opened has the last word.
AudioStatus PulseStream::open(const std::string& source, std::uint64_t stopsBefore) {
  LirvoxError error;
  const auto server = session_->connection(error);
  if (!server) {
    log(error.localizedDescription);
    return audioServerError;
  }
  if (const auto previous = connection()) {
    const PulseConnection::Lock lock(*previous);
    release();
  }
  {
    const MutexLock lock(mutex_);
    connection_ = server;
  }
  if (connect(*server, source, stopsBefore) && waitUntilOpen()) return audioNoError;
  const std::string reason = server->lastError();
  const PulseConnection::Lock lock(*server);
  release();
  if (stops() != stopsBefore) return audioNoError;
  log("Cannot capture: " + reason);
  return audioServerError;
}

bool PulseStream::connect(PulseConnection& server, const std::string& source,
                          std::uint64_t stopsBefore) {
  const PulseConnection::Lock lock(server);
  if (stops() != stopsBefore) return false;
  stream_ = pa_stream_new(server.context(), session_->names().stream.c_str(), &sampleSpec, nullptr);
  if (!stream_) return false;
  {
    const MutexLock guard(mutex_);
    state_ = State::opening;
  }
  delivering_ = true;
  framesSinceStart_ = 0;
  setCallbacks();
  constexpr auto serverChooses = static_cast<std::uint32_t>(-1);
  const auto delivery = static_cast<std::uint32_t>(maximumFrames * pa_frame_size(&sampleSpec));
  const pa_buffer_attr buffer{serverChooses, serverChooses, serverChooses, serverChooses, delivery};
  // A source that was asked for by name is not to be replaced by another behind the back.
  const auto flags = static_cast<pa_stream_flags_t>(
      PA_STREAM_ADJUST_LATENCY | (source.empty() ? PA_STREAM_NOFLAGS : PA_STREAM_DONT_MOVE));
  const char* const device = source.empty() ? nullptr : source.c_str();
  return pa_stream_connect_record(stream_, device, &buffer, flags) >= 0;
}

bool PulseStream::waitUntilOpen() {
  const auto deadline = std::chrono::steady_clock::now() + PulseConnection::patience;
  const MutexLock lock(mutex_);
  while (state_ == State::opening && changed_.waitUntil(mutex_, deadline)) continue;
  return state_ == State::open;
}

void PulseStream::setCallbacks() {
  pa_stream_set_state_callback(
      stream_, [](pa_stream*, void* self) { from(self).stateChanged(); }, this);
  pa_stream_set_suspended_callback(
      stream_, [](pa_stream*, void* self) { from(self).suspensionChanged(); }, this);
  pa_stream_set_moved_callback(
      stream_, [](pa_stream*, void* self) { from(self).session_->announceRouteChange(); }, this);
  pa_stream_set_read_callback(
      stream_,
      [](pa_stream*, std::size_t, void* self) {
        // The input callback may give up the unit, and with it this stream.
        const auto kept = from(self).shared_from_this();
        kept->read();
      },
      this);
}

void PulseStream::clearCallbacks() {
  pa_stream_set_state_callback(stream_, nullptr, nullptr);
  pa_stream_set_suspended_callback(stream_, nullptr, nullptr);
  pa_stream_set_moved_callback(stream_, nullptr, nullptr);
  pa_stream_set_read_callback(stream_, nullptr, nullptr);
}

void PulseStream::stop() {
  const auto server = countStop();
  if (!server) return;
  const PulseConnection::Lock lock(*server);
  if (interrupted_ && delivering_ && state_ == State::open) {
    delivering_ = false;
    forget(pa_stream_cork(stream_, 1, nullptr, nullptr));
  } else {
    release();
  }
}

void PulseStream::close() {
  const auto server = countStop();
  if (!server) return;
  const PulseConnection::Lock lock(*server);
  release();
}

std::shared_ptr<PulseConnection> PulseStream::countStop() {
  const MutexLock lock(mutex_);
  ++stops_;
  return connection_;
}

void PulseStream::release() {
  if (stream_) {
    clearCallbacks();
    pa_stream_disconnect(stream_);
    pa_stream_unref(stream_);
    stream_ = nullptr;
  }
  delivering_ = false;
  interrupted_ = false;
  const MutexLock lock(mutex_);
  state_ = State::closed;
  changed_.notifyAll();
}

void PulseStream::changeSource(const std::string& source) {
  const MutexLock lock(startMutex_);
  const std::uint64_t stopsBefore = stops();
  if (!isRunning()) return;
  if (open(source, stopsBefore) != audioNoError) session_->announceInterruption(began);
}

void PulseStream::stateChanged() {
  const pa_stream_state_t state = pa_stream_get_state(stream_);
  if (state == PA_STREAM_READY) {
    {
      const MutexLock lock(mutex_);
      state_ = State::open;
      changed_.notifyAll();
    }
    suspensionChanged();
  } else if (!PA_STREAM_IS_GOOD(state)) {
    const bool wasCapturing = state_ == State::open && delivering_;
    release();
    if (wasCapturing) session_->announceInterruption(began);
  }
}

void PulseStream::suspensionChanged() {
  const bool suspended = pa_stream_is_suspended(stream_) > 0;
  if (suspended == interrupted_ || (suspended && !delivering_)) return;
  if (session_->announceInterruption(suspended ? began : ended)) interrupted_ = suspended;
}

void PulseStream::read() {
  pa_stream* const stream = pa_stream_ref(stream_);
  const void* data = nullptr;
  std::size_t bytes = 0;
  while (stream_ == stream && pa_stream_peek(stream, &data, &bytes) == 0 && bytes > 0) {
    if (delivering_) deliver(data, bytes);
    pa_stream_drop(stream);
  }
  pa_stream_unref(stream);
}

// A hole in the stream has no data; it is as long as it says, and silent.
void PulseStream::deliver(const void* data, std::size_t bytes) {
  const std::size_t frameSize = pa_frame_size(&sampleSpec);
  const auto* position = static_cast<const char*>(data);
  for (std::size_t left = bytes / frameSize; left > 0 && delivering_;) {
    const auto frames = static_cast<std::uint32_t>(std::min<std::size_t>(left, maximumFrames));
    const AudioTimeStamp timeStamp{static_cast<double>(framesSinceStart_), steadyNanoseconds()};
    AudioUnit::RenderActionFlags flags = 0;
    fragment_ = position;
    runLogged([&] {
      if (callback) callback(flags, timeStamp, audioUnitInputBus, frames);
    });
    framesSinceStart_ += frames;
    left -= frames;
    if (position) position += frames * frameSize;
  }
}

AudioStatus PulseStream::render(std::uint32_t frames, AudioBufferList& list) const {
  if (list.buffers.empty()) return audioParameterError;
  const std::size_t bytes = frames * pa_frame_size(&sampleSpec);
  const AudioBuffer& buffer = list.buffers.front();
  if (buffer.dataByteSize < bytes) return audioTooManyFramesError;
  if (fragment_) {
    std::memcpy(buffer.data, fragment_, bytes);
  } else {
    std::memset(buffer.data, 0, bytes);
  }
  return audioNoError;
}

}  // namespace lirvox::platform
