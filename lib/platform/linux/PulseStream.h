// A record stream on a PulseAudio server, and what becomes of it.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include <pulse/pulseaudio.h>

#include "../AudioUnit.h"
#include "PulseAudioSession.h"
#include "PulseConnection.h"

namespace lirvox::platform {

/// The part of a unit that the connection's thread knows: it outlives the unit
/// when that is destroyed from inside its own callback.
///
/// A source that the server suspends begins an interruption, and its return ends
/// it; a stream that the server ends, or a server that is gone, begins one that
/// does not end. A moved stream is a route change.
class PulseStream : public std::enable_shared_from_this<PulseStream> {
 public:
  /// Frames of the largest delivery.
  static constexpr std::uint32_t maximumFrames = 1024;

  explicit PulseStream(std::shared_ptr<PulseAudioSession> session);
  ~PulseStream();

  // Constant while the stream is open.
  pa_sample_spec sampleSpec{};
  AudioUnit::InputCallback callback;

  AudioStatus start();
  /// Ends deliveries. A stream under suspension is kept, so that its return is
  /// heard of, unless it was stopped before.
  void stop();
  void close();
  bool isRunning();
  /// Goes on with another source, if it runs.
  void changeSource(const std::string& source);

  AudioStatus render(std::uint32_t frames, AudioBufferList& list) const;

 private:
  enum class State { closed, opening, open };

  static PulseStream& from(void* self) { return *static_cast<PulseStream*>(self); }

  std::shared_ptr<PulseConnection> connection();
  std::shared_ptr<PulseConnection> countStop();
  bool resume();
  std::uint64_t stops();
  AudioStatus open(const std::string& source, std::uint64_t stopsBefore);
  bool connect(PulseConnection& server, const std::string& source, std::uint64_t stopsBefore);
  bool waitUntilOpen();
  void setCallbacks();
  void clearCallbacks();
  void release();

  // On the connection's thread.
  void stateChanged();
  void suspensionChanged();
  void read();
  void deliver(const void* data, std::size_t bytes);

  const std::shared_ptr<PulseAudioSession> session_;
  std::mutex startMutex_;  // one at a time starts; never taken on the connection's thread

  std::mutex mutex_;
  std::condition_variable changed_;              // state_ has changed
  std::shared_ptr<PulseConnection> connection_;  // guarded by mutex_
  std::uint64_t stops_ = 0;                      // guarded by mutex_; how often it was stopped
  State state_ = State::closed;                  // written under mutex_ and the connection's lock

  // Under the connection's lock.
  pa_stream* stream_ = nullptr;
  bool delivering_ = false;
  bool interrupted_ = false;  // a suspension was announced, its end was not
  const void* fragment_ = nullptr;
  std::uint64_t framesSinceStart_ = 0;
};

}  // namespace lirvox::platform
