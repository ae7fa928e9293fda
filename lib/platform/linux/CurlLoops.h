// The loops of all sessions, which end before the process does.
#pragma once

#include <memory>

namespace lirvox::platform {

class CurlLoop;

/// What libcurl uses frees its state as the process exits, whoever still uses it: so the loops are
/// told to end just before, and waited for, though not for ever. Callable from any thread.
class CurlLoops {
 public:
  CurlLoops() = delete;

  /// Makes libcurl ready, which all that uses it does first.
  static void prepare();

  /// Notes a loop whose thread is about to start; false when the process is ending.
  static bool enter(const std::shared_ptr<CurlLoop>& loop);
};

}  // namespace lirvox::platform
