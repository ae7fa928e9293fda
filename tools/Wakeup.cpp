// The main thread's sleep, which signals and other threads end.
#include "tools/Wakeup.h"

#include <atomic>
#include <ctime>

#include <semaphore.h>
#include <signal.h>

namespace lirvox::tools {
namespace {

// All that a signal handler can reach: process-wide.
std::atomic<bool> caught{false};

sem_t& semaphore() {
  static sem_t* const made = [] {
    static sem_t value;
    ::sem_init(&value, 0, 0);
    return &value;
  }();
  return *made;
}

void handle(int) {
  caught = true;
  wake();
}

}  // namespace

void catchSignals() {
  semaphore();  // made before a handler needs it
  struct sigaction action {};
  action.sa_handler = handle;
  action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(number, &action, nullptr);
  ::signal(SIGPIPE, SIG_IGN);
}

bool signalCaught() {
  return caught;
}

void wake() {
  ::sem_post(&semaphore());
}

void sleepFor(std::chrono::milliseconds time) {
  timespec until{};
  ::clock_gettime(CLOCK_MONOTONIC, &until);
  const std::int64_t end = until.tv_sec * 1'000'000'000 + until.tv_nsec + time.count() * 1'000'000;
  until = {end / 1'000'000'000, end % 1'000'000'000};
  ::sem_clockwait(&semaphore(), CLOCK_MONOTONIC, &until);
  while (::sem_trywait(&semaphore()) == 0) {
  }
}

}  // namespace lirvox::tools
