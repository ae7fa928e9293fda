// Processing passes, one after the other.
#include "lib/PassQueue.h"

#include <utility>

#include "lib/platform/Platform.h"
#include "lib/platform/RunTask.h"

namespace lirvox {

void PassQueue::prepare(Capture& capture) {
  capture.progress = platform::current()->globalQueue->makeWaker([weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->step();
  });
}

void PassQueue::start(std::shared_ptr<ProcessingPass> pass) {
  {
    const platform::MutexLock lock(mutex_);
    passes_.push_back(std::move(pass));
  }
  platform::current()->globalQueue->async([self = shared_from_this()] { self->step(); });
}

void PassQueue::step() {
  if (calls_.fetch_add(1) != 0) return;
  int answered = 0;
  do {
    answered = calls_.load();
    runPasses();
  } while (calls_.fetch_sub(answered) != answered);
}

void PassQueue::runPasses() {
  while (const auto pass = front()) {
    PassState state = PassState::failed;
    platform::runLogged([&] { state = pass->run(); });
    if (state == PassState::waiting) return;
    platform::runLogged([&] { finish_(*pass, state); });
    popFront();
  }
}

std::shared_ptr<ProcessingPass> PassQueue::front() {
  const platform::MutexLock lock(mutex_);
  return passes_.empty() ? nullptr : passes_.front();
}

void PassQueue::popFront() {
  const platform::MutexLock lock(mutex_);
  passes_.pop_front();
}

}  // namespace lirvox
