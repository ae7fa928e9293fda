// One connection to a PulseAudio server, with the thread that serves it.
#include "lib/platform/linux/PulseConnection.h"

#include <thread>
#include <utility>

#include "lib/platform/BlockedSignals.h"

namespace lirvox::platform {
namespace {

bool startQuietly(pa_threaded_mainloop* loop) {
  const BlockedSignals quiet;
  return pa_threaded_mainloop_start(loop) >= 0;
}

}  // namespace

PulseConnection::Lock::Lock(const PulseConnection& connection)
    : loop_(connection.isOwnThread() ? nullptr : connection.loop_) {
  if (loop_) pa_threaded_mainloop_lock(loop_);
}

PulseConnection::Lock::~Lock() {
  if (loop_) pa_threaded_mainloop_unlock(loop_);
}

std::shared_ptr<PulseConnection> PulseConnection::open(const std::string& server,
                                                       const std::string& application,
                                                       std::function<void()> changed,
                                                       std::string& reason) {
  // The last owner may be the connection's own thread, which cannot wait for its own end.
  const auto release = [](PulseConnection* connection) {
    std::unique_ptr<PulseConnection> owned(connection);
    if (owned->isOwnThread()) std::thread([last = std::move(owned)] {}).detach();
  };
  pa_threaded_mainloop* const loop = pa_threaded_mainloop_new();
  if (!loop) {
    reason = "Out of resources";
    return nullptr;
  }
  std::shared_ptr<PulseConnection> connection(
      new PulseConnection(loop, application, std::move(changed)), release);
  pa_threaded_mainloop_set_name(loop, "lirvox-audio");
  if (connection->connect(server)) {
    connection->subscribe();
    return connection;
  }
  reason = connection->lastError();
  return nullptr;
}

PulseConnection::PulseConnection(pa_threaded_mainloop* loop, const std::string& application,
                                 std::function<void()> changed)
    : changed_(std::move(changed)),
      loop_(loop),
      context_(pa_context_new(pa_threaded_mainloop_get_api(loop_), application.c_str())) {}

PulseConnection::~PulseConnection() {
  {
    const Lock lock(*this);
    pa_context_set_state_callback(context_, nullptr, nullptr);
    pa_context_set_subscribe_callback(context_, nullptr, nullptr);
    pa_context_disconnect(context_);
  }
  pa_threaded_mainloop_stop(loop_);
  pa_context_unref(context_);
  pa_threaded_mainloop_free(loop_);
}

bool PulseConnection::connect(const std::string& server) {
  pa_context_set_state_callback(
      context_,
      [](pa_context*, void* self) { static_cast<PulseConnection*>(self)->stateChanged(); }, this);
  const char* const name = server.empty() ? nullptr : server.c_str();
  if (pa_context_connect(context_, name, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) return false;
  if (!startQuietly(loop_)) return false;
  {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    const MutexLock lock(mutex_);
    while (!settled_ && woken_.waitUntil(mutex_, deadline)) continue;
  }
  return isUp();
}

void PulseConnection::subscribe() {
  const Lock lock(*this);
  pa_context_set_subscribe_callback(
      context_,
      [](pa_context*, pa_subscription_event_type_t, std::uint32_t, void* self) {
        static_cast<PulseConnection*>(self)->changed_();
      },
      this);
  constexpr auto events = static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SERVER |
                                                              PA_SUBSCRIPTION_MASK_SOURCE);
  if (pa_operation* const operation = pa_context_subscribe(context_, events, nullptr, nullptr)) {
    pa_operation_unref(operation);
  }
}

void PulseConnection::stateChanged() {
  const pa_context_state_t state = pa_context_get_state(context_);
  const bool ready = state == PA_CONTEXT_READY;
  if (!ready && PA_CONTEXT_IS_GOOD(state)) return;
  {
    const MutexLock lock(mutex_);
    settled_ = true;
    woken_.notifyAll();
  }
  // A server that was never reached has changed nothing: whoever is told of a change looks
  // again, and would try to connect for ever.
  if (std::exchange(wasReady_, ready)) changed_();
}

bool PulseConnection::isUp() const {
  const Lock lock(*this);
  return pa_context_get_state(context_) == PA_CONTEXT_READY;
}

std::string PulseConnection::lastError() const {
  const Lock lock(*this);
  const int error = pa_context_errno(context_);
  return error == PA_OK ? "No answer" : pa_strerror(error);
}

bool PulseConnection::ask(const std::function<pa_operation*(pa_context*)>& request) {
  struct Progress {
    PulseConnection& connection;
    bool ended LIRVOX_GUARDED_BY(connection.mutex_);
  } progress{*this, false};
  pa_operation* operation = nullptr;
  {
    const Lock lock(*this);
    operation = request(context_);
    if (!operation) return false;
    pa_operation_set_state_callback(
        operation,
        [](pa_operation*, void* data) {
          auto& changed = *static_cast<Progress*>(data);
          const MutexLock guard(changed.connection.mutex_);
          changed.ended = true;
          changed.connection.woken_.notifyAll();
        },
        &progress);
  }
  {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    const MutexLock lock(progress.connection.mutex_);
    while (!progress.ended && woken_.waitUntil(progress.connection.mutex_, deadline)) continue;
  }
  const Lock lock(*this);
  const bool answered = pa_operation_get_state(operation) == PA_OPERATION_DONE;
  pa_operation_set_state_callback(operation, nullptr, nullptr);
  pa_operation_cancel(operation);
  pa_operation_unref(operation);
  return answered;
}

}  // namespace lirvox::platform
