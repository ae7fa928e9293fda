// How every queue runs a task.
#include "lib/platform/RunTask.h"

#include <exception>
#include <string>

#include "lib/platform/Platform.h"

namespace lirvox::platform {
namespace {

std::string reason() {
  try {
    throw;
  } catch (const std::exception& error) {
    return std::string("A task ended with an exception: ") + error.what();
  } catch (...) {
    return "A task ended with an unknown exception";
  }
}

}  // namespace

void logException() noexcept {
  try {
    log(reason());
  } catch (...) {
    return;  // nothing can be said any more, and nobody may be thrown at
  }
}

}  // namespace lirvox::platform
