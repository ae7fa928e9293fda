// Processes that a fork has made, in which the library's threads do not exist.
#include "lib/platform/ForkedChild.h"

#include <atomic>

#include <pthread.h>

namespace lirvox::platform {
namespace {

std::atomic<bool> isChild{false};

}  // namespace

bool isForkedChild() {
  return isChild.load(std::memory_order_relaxed);
}

void noteForks() {
  pthread_atfork(nullptr, nullptr, [] { isChild.store(true, std::memory_order_relaxed); });
}

}  // namespace lirvox::platform
