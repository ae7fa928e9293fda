// How every queue runs a task.
#pragma once

namespace lirvox::platform {

/// Logs the exception that is being handled; does nothing when there is no memory for that.
void logException() noexcept;

/// Runs `task`; an exception that leaves it is logged and dropped. Returns whether there
/// was none. Takes no memory of its own.
template <typename Task>
bool runLogged(const Task& task) noexcept {
  try {
    task();
    return true;
  } catch (...) {
    logException();
    return false;
  }
}

}  // namespace lirvox::platform
