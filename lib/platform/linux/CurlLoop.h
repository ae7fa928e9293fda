// The thread that moves the transfers of one session forward.
#pragma once

#include <atomic>
#include <memory>
#include <thread>
#include <unordered_map>
#include <vector>

#include "../Mutex.h"

namespace lirvox::platform {

class CurlTransfer;

/// Owns the transfers from their start to their end. Callable from any thread.
class CurlLoop {
 public:
  explicit CurlLoop(int maximumConnectionsPerHost);
  ~CurlLoop();

  CurlLoop(const CurlLoop&) = delete;
  CurlLoop& operator=(const CurlLoop&) = delete;

  /// Hands a transfer over; the first one starts the thread.
  static void add(const std::shared_ptr<CurlLoop>& loop, std::unique_ptr<CurlTransfer> transfer);

  /// Drops all transfers and ends the thread.
  void stop();

 private:
  void run();
  void takeAdded();
  void finishDone();

  void* const multi_;
  std::atomic<bool> stopping_{false};
  Mutex mutex_;
  std::vector<std::unique_ptr<CurlTransfer>> added_ LIRVOX_GUARDED_BY(mutex_);
  std::thread thread_ LIRVOX_GUARDED_BY(mutex_);
  // The loop's thread only.
  std::unordered_map<void*, std::unique_ptr<CurlTransfer>> running_;
};

}  // namespace lirvox::platform
