// Task queues on threads of the library's own, over standalone Asio.
#pragma once

#include <memory>
#include <string>

#include "../TaskQueue.h"

namespace lirvox::platform {

/// A queue served by `threads` threads that start with the first task and end
/// with the queue. With one thread the queue is serial. `name` (at most 15
/// characters are shown) names the threads.
std::shared_ptr<TaskQueue> makeThreadedQueue(const std::string& name, unsigned threads);

/// A serial queue on the threads of `pool`, which `makeThreadedQueue` has made.
std::shared_ptr<TaskQueue> makeSerialQueueOn(const std::shared_ptr<TaskQueue>& pool);

}  // namespace lirvox::platform
