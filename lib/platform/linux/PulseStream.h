// A record stream on a PulseAudio server, and what becomes of it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <pulse/pulseaudio.h>

#include "../AudioUnit.h"
#include "../Mutex.h"
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

  /// Only from inside the callback.
  AudioStatus render(std::uint32_t frames, AudioBufferList& list) const
      LIRVOX_REQUIRES(PulseConnection::serving);

 private:
  enum class State { closed, opening, open };

  // The stream that a callback is for.
  static PulseStream& from(void* self) LIRVOX_ASSERTS(PulseConnection::serving) {
    return *static_cast<PulseStream*>(self);
  }

  std::shared_ptr<PulseConnection> connection();
  std::shared_ptr<PulseConnection> countStop();
  bool resume();
  std::uint64_t stops();
  AudioStatus open(const std::string& source, std::uint64_t stopsBefore);
  bool connect(PulseConnection& server, const std::string& source, std::uint64_t stopsBefore);
  bool waitUntilOpen();
  void setCallbacks() LIRVOX_REQUIRES(PulseConnection::serving);
  void clearCallbacks() LIRVOX_REQUIRES(PulseConnection::serving);
  void release() LIRVOX_REQUIRES(PulseConnection::serving);

  // On the connection's thread.
  void stateChanged() LIRVOX_REQUIRES(PulseConnection::serving);
  void suspensionChanged() LIRVOX_REQUIRES(PulseConnection::serving);
  void read() LIRVOX_REQUIRES(PulseConnection::serving);
  void deliver(const void* data, std::size_t bytes) LIRVOX_REQUIRES(PulseConnection::serving);

  const std::shared_ptr<PulseAudioSession> session_;
  Mutex startMutex_;  // one at a time starts; never taken on the connection's thread

  Mutex mutex_;
  Condition changed_;  // state_ has changed
  std::shared_ptr<PulseConnection> connection_ LIRVOX_GUARDED_BY(mutex_);
  std::uint64_t stops_ LIRVOX_GUARDED_BY(mutex_) = 0;  // how often it was stopped
  State state_ = State::closed;  // written under mutex_ and the connection's lock

  pa_stream* stream_ LIRVOX_GUARDED_BY(PulseConnection::serving) = nullptr;
  bool delivering_ LIRVOX_GUARDED_BY(PulseConnection::serving) = false;
  // A suspension was announced, its end was not.
  bool interrupted_ LIRVOX_GUARDED_BY(PulseConnection::serving) = false;
  const void* fragment_ LIRVOX_GUARDED_BY(PulseConnection::serving) = nullptr;
  std::uint64_t framesSinceStart_ LIRVOX_GUARDED_BY(PulseConnection::serving) = 0;
};

}  // namespace lirvox::platform
