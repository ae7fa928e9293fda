// The audio session over a PulseAudio server.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "../AudioSession.h"
#include "../Mutex.h"
#include "../PulseAudio.h"
#include "../TaskQueue.h"
#include "PulseConnection.h"
#include "PulseSources.h"

namespace lirvox::platform {

class PulseStream;

/// Connects when it is activated or first asked, and again after the server was
/// lost. Without a server, it has no inputs.
class PulseAudioSession : public AudioSession,
                          public std::enable_shared_from_this<PulseAudioSession> {
 public:
  explicit PulseAudioSession(PulseAudioNames names);

  bool setCategory(AudioSessionCategory category, LirvoxError& error) override;
  bool setActive(bool active, LirvoxError& error) override;
  AudioSessionRoute currentRoute() override;
  std::vector<AudioSessionPort> availableInputs() override;
  std::optional<AudioSessionDataSource> inputDataSource() override;
  AudioSessionInput currentInput() override;
  bool setPreferredInput(const std::optional<AudioSessionPort>& port, LirvoxError& error) override;
  bool setInputDataSource(const AudioSessionDataSource& dataSource, LirvoxError& error) override;

  // For streams.
  const PulseAudioNames& names() const { return names_; }
  std::shared_ptr<PulseConnection> connection(LirvoxError& error);
  /// The source that new streams are to name; empty: none, so that the server
  /// chooses, and moves them when its default changes.
  std::string preferredSource();
  std::optional<PulseSource> currentSource();
  void addStream(std::weak_ptr<PulseStream> stream);
  /// Post on the queue; callable on the connection's thread. What the queue throws is logged.
  /// False when it did, and so nobody will be told.
  bool announceInterruption(const AudioSessionInterruption& interruption) noexcept;
  void announceRouteChange() noexcept;

 private:
  std::vector<std::shared_ptr<PulseStream>> streams();

  const PulseAudioNames names_;
  // Set before the first connection, whose thread reads it, and then constant.
  std::shared_ptr<TaskQueue> queue_;
  std::atomic<bool> routeChangePending_{false};
  Mutex mutex_;
  std::shared_ptr<PulseConnection> connection_ LIRVOX_GUARDED_BY(mutex_);
  std::string preferredSource_ LIRVOX_GUARDED_BY(mutex_);
  std::vector<std::weak_ptr<PulseStream>> streams_ LIRVOX_GUARDED_BY(mutex_);
};

}  // namespace lirvox::platform
