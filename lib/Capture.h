// One capture: its samples, how far they are analysed, and how it ends.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "CaptureBuffer.h"
#include "LirvoxExport.h"
#include "platform/Mutex.h"
#include "platform/TaskQueue.h"

namespace lirvox {

class LirvoxMicrophone;

/// What the audio thread, the processing pass and the controller share.
///
/// All members may be used from any thread, except that one thread at a time
/// delivers. The microphone and both wakers are set before the capture is published.
class Capture {
 public:
  CaptureBuffer buffer;
  /// Bytes that the pass has taken, always whole blocks.
  std::atomic<std::size_t> consumed{0};
  /// True until the capture ends; the pass waits for more samples while it is.
  std::atomic<bool> recording{true};
  /// True once the capture is to be dropped without a lookup.
  std::atomic<bool> cancelled{false};

  /// The only one that may deliver, or null: any may. Never dereferenced.
  const LirvoxMicrophone* microphone = nullptr;

  /// Makes the pass look again.
  std::unique_ptr<platform::Waker> progress;
  /// Ends the capture on the main queue.
  std::unique_ptr<platform::Waker> limitReached;

  /// Whether a complete block waits for the pass.
  bool hasBlock() const;

  /// Appends one delivery. Wakes the pass when that completes a block, and ends the
  /// capture when it holds `limitInBytes`, or memory has run out. Meant for the audio thread: see
  /// `CaptureBuffer::append`.
  void deliver(const void* bytes, std::size_t count, std::size_t limitInBytes);

  /// Ends the capture; the pass works off the complete blocks that remain.
  void end();
  /// Ends the capture and drops it.
  void cancel();
};

/// Size of one block of a capture, in bytes.
std::size_t blockSizeInBytes();

/// The capture that deliveries go to. The audio thread reads it without ever waiting;
/// a replacement waits until deliveries to the old capture are over.
class CaptureSlot {
 public:
  /// For those who look at and replace the owner's reference; the audio thread never takes it.
  platform::Mutex control;

  /// Calls `use` with the current capture, if there is one. Not to be nested.
  template <typename Use>
  void with(Use use) {
    const User user(users_);
    if (Capture* const capture = raw_.load()) use(*capture);
  }

  /// Makes `capture` the current one. Not for a thread inside `with`.
  void replace(std::shared_ptr<Capture> capture) LIRVOX_REQUIRES(control);

  /// The current capture, until it is replaced.
  const std::shared_ptr<Capture>& get() const LIRVOX_REQUIRES(control) { return owner_; }

 private:
  // Counts itself, also when `use` throws: a replacement waits for all users.
  class User {
   public:
    explicit User(std::atomic<int>& users) : users_(users) { users_.fetch_add(1); }
    ~User() { users_.fetch_sub(1); }
    User(const User&) = delete;
    User& operator=(const User&) = delete;

   private:
    std::atomic<int>& users_;
  };

  std::atomic<Capture*> raw_{nullptr};
  std::atomic<int> users_{0};
  std::shared_ptr<Capture> owner_ LIRVOX_GUARDED_BY(control);
};

}  // namespace lirvox
