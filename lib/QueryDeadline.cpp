// An end to queries that would never come to one.
#include "lib/QueryDeadline.h"

#include <sqlite3.h>

namespace lirvox {
namespace {

// A few milliseconds.
constexpr int kInstructionsBetweenChecks = 100'000;

}  // namespace

QueryDeadline::QueryDeadline(sqlite3* connection, double seconds)
    : connection_(connection), time_(seconds) {
  sqlite3_progress_handler(connection_, kInstructionsBetweenChecks, &QueryDeadline::check, this);
}

QueryDeadline::~QueryDeadline() {
  sqlite3_progress_handler(connection_, 0, nullptr, nullptr);
}

int QueryDeadline::check(void* deadline) {
  return static_cast<const QueryDeadline*>(deadline)->hasPassed() ? 1 : 0;
}

}  // namespace lirvox
