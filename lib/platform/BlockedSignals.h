// Threads that leave signals to the host.
#pragma once

#include <pthread.h>
#include <signal.h>

namespace lirvox::platform {

/// While it lives, this thread takes no signals, nor do the threads that it starts, which
/// inherit the mask for good: signals belong to the host.
class BlockedSignals {
 public:
  BlockedSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous_);
  }
  ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;

 private:
  sigset_t previous_;
};

}  // namespace lirvox::platform
