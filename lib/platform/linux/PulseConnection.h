// One connection to a PulseAudio server, with the thread that serves it.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include <pulse/pulseaudio.h>

#include "../Mutex.h"

namespace lirvox::platform {

class PulseConnection {
 public:
  /// How long an answer of the server may take before it counts as lost.
  static constexpr std::chrono::seconds patience{3};

  /// Stands for the lock of a connection, whichever it is, which its thread holds during
  /// callbacks.
  struct LIRVOX_CAPABILITY("connection") Serving {};
  static constexpr Serving serving{};
  /// For what only callbacks do.
  static void assertServing() LIRVOX_ASSERTS(serving) {}

  /// Holds the lock of a connection; nothing to do on its own thread.
  class LIRVOX_SCOPED_CAPABILITY Lock {
   public:
    explicit Lock(const PulseConnection& connection) LIRVOX_ACQUIRE(serving);
    ~Lock() LIRVOX_RELEASE();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

   private:
    pa_threaded_mainloop* const loop_;  // null on the connection's own thread
  };

  /// Connects and waits until it is done; null with the reason in `reason`.
  /// `changed` is called on the connection's thread when the server's defaults,
  /// sources or their ports change, and must not throw. Starts no server.
  static std::shared_ptr<PulseConnection> open(const std::string& server,
                                               const std::string& application,
                                               std::function<void()> changed, std::string& reason);
  ~PulseConnection();
  PulseConnection(const PulseConnection&) = delete;
  PulseConnection& operator=(const PulseConnection&) = delete;

  bool isUp() const;
  bool isOwnThread() const { return pa_threaded_mainloop_in_thread(loop_) != 0; }
  /// Of the last failed operation, for people.
  std::string lastError() const;
  pa_context* context() const LIRVOX_REQUIRES(serving) { return context_; }

  /// Sends a request and waits until it is answered, cancelled or out of time;
  /// true when it was answered. Not for the connection's own thread. Callbacks of
  /// the request never run after it has returned.
  bool ask(const std::function<pa_operation*(pa_context*)>& request);

 private:
  PulseConnection(pa_threaded_mainloop* loop, const std::string& application,
                  std::function<void()> changed);
  bool connect(const std::string& server);
  void subscribe();
  void stateChanged();

  const std::function<void()> changed_;
  pa_threaded_mainloop* const loop_;
  pa_context* const context_;
  Mutex mutex_;  // with woken_, wakes those who wait for an answer
  Condition woken_;
  bool settled_ LIRVOX_GUARDED_BY(mutex_) = false;  // connected, or refused
  bool wasReady_ = false;                           // on the connection's thread
};

}  // namespace lirvox::platform
