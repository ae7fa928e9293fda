// What SQLite does on connections that others open.
#include "tests/support/SqlTrace.h"

#include <utility>

namespace lirvox::test {
namespace {

SqlTrace* current = nullptr;

}  // namespace

SqlTrace::SqlTrace(WhenOpened whenOpened) : whenOpened_(std::move(whenOpened)) {
  current = this;
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(&SqlTrace::opened));
}

SqlTrace::~SqlTrace() {
  sqlite3_reset_auto_extension();
  current = nullptr;
}

std::vector<std::string> SqlTrace::takeStatements() {
  const std::lock_guard lock(mutex_);
  return std::exchange(statements_, {});
}

int SqlTrace::opened(sqlite3* connection, char**, const sqlite3_api_routines*) {
  sqlite3_trace_v2(connection, SQLITE_TRACE_STMT, &SqlTrace::ran, current);
  if (current->whenOpened_) current->whenOpened_(connection);
  return SQLITE_OK;
}

int SqlTrace::ran(unsigned, void* trace, void*, void* sql) {
  auto& self = *static_cast<SqlTrace*>(trace);
  const std::lock_guard lock(self.mutex_);
  self.statements_.emplace_back(static_cast<const char*>(sql));
  return 0;
}

}  // namespace lirvox::test
