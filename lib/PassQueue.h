// Processing passes, one after the other.
#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <memory>

#include "ProcessingPass.h"
#include "platform/Mutex.h"

namespace lirvox {

/// Runs each pass on the platform's global queue, never two at once: they share the
/// spectral history. No thread waits while a pass has nothing to do. When a capture
/// starts before the pass of the one before has finished, its pass comes after it.
///
/// All operations may be called from any thread.
class PassQueue : public std::enable_shared_from_this<PassQueue> {
 public:
  /// Ends a pass: called once for each, on the global queue, with its last state.
  using Finish = std::function<void(ProcessingPass&, PassState)>;

  explicit PassQueue(Finish finish) : finish_(std::move(finish)) {}

  /// Gives `capture` its progress waker. To be called before samples arrive.
  void prepare(Capture& capture);

  /// Lines `pass` up and starts it as soon as those before it have ended.
  void start(std::shared_ptr<ProcessingPass> pass);

 private:
  void step();
  void runPasses();
  std::shared_ptr<ProcessingPass> front();
  void popFront();

  const Finish finish_;
  // Calls of `step` not yet answered. Whoever raises it from 0 runs the passes.
  std::atomic<int> calls_{0};
  platform::Mutex mutex_;
  std::deque<std::shared_ptr<ProcessingPass>> passes_ LIRVOX_GUARDED_BY(mutex_);
};

}  // namespace lirvox
