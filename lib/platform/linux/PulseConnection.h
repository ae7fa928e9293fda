// One connection to a PulseAudio server, with the thread that serves it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include <pulse/pulseaudio.h>

namespace lirvox::platform {

class PulseConnection {
 public:
  /// How long an answer of the server may take before it counts as lost.
  static constexpr std::chrono::seconds patience{3};

  /// Holds the lock that the connection's thread holds during callbacks; nothing
  /// to do on that thread itself.
  class Lock {
   public:
    explicit Lock(const PulseConnection& connection);
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

   private:
    pa_threaded_mainloop* const loop_;  // null on the connection's own thread
  };

  /// Connects and waits until it is done; null with the reason in `reason`.
  /// `changed` is called on the connection's thread when the server's defaults,
  /// sources or their ports change. Starts no server.
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
  /// To be used under `Lock`.
  pa_context* context() const { return context_; }

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
  std::mutex mutex_;  // with woken_, wakes those who wait for an answer
  std::condition_variable woken_;
  bool settled_ = false;   // guarded by mutex_: connected, or refused
  bool wasReady_ = false;  // on the connection's thread
};

}  // namespace lirvox::platform
