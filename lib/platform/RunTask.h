// How every queue runs a task.
#pragma once

#include "TaskQueue.h"

namespace lirvox::platform {

/// Runs `task`; an exception that leaves it is logged and dropped.
void runLogged(const Task& task);

}  // namespace lirvox::platform
