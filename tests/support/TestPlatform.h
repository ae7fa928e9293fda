// A platform for tests.
#pragma once

#include "RecordedLog.h"
#include "TemporaryFolder.h"
#include "VirtualScheduler.h"
#include "lib/platform/Platform.h"

namespace lirvox::test {

/// Waits until all that `queue` was handed before has run.
void drain(platform::TaskQueue& queue);

/// While it lives, the installed platform: queues and clock in virtual time, a log
/// that is kept, folders of its own. What is not named here is the system's.
class TestPlatform {
 public:
  TestPlatform();
  ~TestPlatform();

  /// Replaces services: `change` gets the installed ones and alters what it likes.
  void change(const std::function<void(platform::Platform&)>& change);
  /// Has the system's main and global queues from now on.
  void useRealQueues();

  VirtualScheduler scheduler;
  const std::shared_ptr<RecordedLog> log = std::make_shared<RecordedLog>();
  /// Holds "caches".
  TemporaryFolder folder;

 private:
  const std::shared_ptr<const platform::Platform> previous_;
};

}  // namespace lirvox::test
