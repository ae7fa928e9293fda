// How every queue runs a task.
#include "lib/platform/RunTask.h"

#include <exception>
#include <string>

#include "lib/platform/Platform.h"

namespace lirvox::platform {

void runLogged(const Task& task) {
  try {
    task();
  } catch (const std::exception& error) {
    log(std::string("A task ended with an exception: ") + error.what());
  } catch (...) {
    log("A task ended with an unknown exception");
  }
}

}  // namespace lirvox::platform
