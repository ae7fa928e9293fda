// Requests to the system that fail, one after the other.
#pragma once

#include <ostream>

#include "Test.h"

namespace lirvox::test {

/// How long a failure lasts: one request, or all later ones of the operation too.
enum class Failing { once, onwards };

inline void PrintTo(Failing failing, std::ostream* out) {
  *out << (failing == Failing::once ? "once" : "onwards");
}

/// Counts a request to the system; true when it is to fail. Only requests of the thread on
/// which `failEach` runs count, and only while its operation runs.
bool faultIsDue() noexcept;
/// The same for a request of any thread.
bool faultOfAnyThreadIsDue() noexcept;

/// While it lives, requests of this thread do not count: those of the test itself.
class FaultsPaused {
 public:
  FaultsPaused();
  ~FaultsPaused();
  FaultsPaused(const FaultsPaused&) = delete;
  FaultsPaused& operator=(const FaultsPaused&) = delete;

 private:
  const bool counts_;
};

/// How many descriptors this process has open.
std::ptrdiff_t openDescriptors();

/// Runs `operation` again and again, with its first request failing, then its second, and
/// so on until it gets through. `check` runs after each. No descriptor may stay open.
/// Returns how many requests there were to fail.
int failEach(Failing failing, const std::function<void()>& operation,
             const std::function<void()>& check);

}  // namespace lirvox::test
