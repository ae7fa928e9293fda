// The thread that moves the transfers of one session forward.
#pragma once

#include <atomic>
#include <chrono>
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

  /// Hands a transfer over; the first one starts the thread. Once the process ends, the
  /// transfer is told an error instead.
  static void add(const std::shared_ptr<CurlLoop>& loop, std::unique_ptr<CurlTransfer> transfer);

  /// Drops all transfers and ends the thread.
  void stop();

  /// The same as the process ends: the thread is asked to, and then waited for.
  void askToStop();
  void stopBy(std::chrono::steady_clock::time_point deadline);

 private:
  bool accept(const std::shared_ptr<CurlLoop>& self, std::unique_ptr<CurlTransfer>& transfer);
  void run();
  void takeAdded();
  void finishDone();
  void dropAll();

  void* multi_;  // null, which libcurl puts up with, once the thread has ended; set under mutex_
  std::atomic<bool> stopping_{false};
  Mutex mutex_;
  std::vector<std::unique_ptr<CurlTransfer>> added_ LIRVOX_GUARDED_BY(mutex_);
  std::thread thread_ LIRVOX_GUARDED_BY(mutex_);
  bool isOver_ LIRVOX_GUARDED_BY(mutex_) = true;  // no thread uses libcurl, or not any more
  Condition over_;
  // The loop's thread only.
  std::unordered_map<void*, std::unique_ptr<CurlTransfer>> running_;
};

}  // namespace lirvox::platform
