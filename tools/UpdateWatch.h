// What an update does, seen through the services that it uses.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "lib/platform/Mutex.h"
#include "lib/platform/Platform.h"

namespace lirvox::tools {

/// How an update ended.
struct UpdateOutcome {
  bool good = false;
  bool downloaded = false;  ///< or began to
  /// What was noticed on the way: why it failed, as far as known.
  std::vector<std::string> notes;
};

/// Hears what an update does. Most failures call no completion, but they leave no task
/// running either: so nobody need wait for a time-out. Callable from any thread.
class UpdateWatch : public std::enable_shared_from_this<UpdateWatch> {
 public:
  /// Makes the sessions and the log of `platform` report to this watch; sessions show
  /// their progress on the terminal.
  void attachTo(platform::Platform& platform);

  /// For the completion of the update.
  void answer(bool good);

  /// Waits for the end of an update that has begun, for as long as `timeout` at most.
  UpdateOutcome wait(std::chrono::duration<double> timeout);

  // For the services.
  void note(const std::string& text);
  void taskBegan(bool isDownload);
  /// `otherwise` is the reason if this was the last task and there is no other one.
  void taskEnded(const std::string& otherwise);

 private:
  platform::Mutex mutex_;
  platform::Condition ended_;
  bool answered_ LIRVOX_GUARDED_BY(mutex_) = false;
  int running_ LIRVOX_GUARDED_BY(mutex_) = 0;
  UpdateOutcome outcome_ LIRVOX_GUARDED_BY(mutex_);
};

}  // namespace lirvox::tools
