// What SQLite does on connections that others open.
#pragma once

#include <sqlite3.h>

#include "Test.h"

namespace lirvox::test {

/// Listens to every connection that is opened while it lives. One at a time.
class SqlTrace {
 public:
  using WhenOpened = std::function<void(sqlite3*)>;

  /// `whenOpened`, if any, is called with each new connection, on the thread that opens it.
  explicit SqlTrace(WhenOpened whenOpened = nullptr) : whenOpened_(std::move(whenOpened)) {
    current_ = this;
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(&SqlTrace::opened));
  }
  ~SqlTrace() { sqlite3_reset_auto_extension(); }

  /// The statements that have run so far, which are then forgotten.
  std::vector<std::string> takeStatements() {
    const std::lock_guard lock(mutex_);
    return std::exchange(statements_, {});
  }

 private:
  static int opened(sqlite3* connection, char**, const sqlite3_api_routines*) {
    sqlite3_trace_v2(connection, SQLITE_TRACE_STMT, &SqlTrace::ran, current_);
    if (current_->whenOpened_) current_->whenOpened_(connection);
    return SQLITE_OK;
  }
  static int ran(unsigned, void* trace, void*, void* sql) {
    auto& self = *static_cast<SqlTrace*>(trace);
    const std::lock_guard lock(self.mutex_);
    self.statements_.emplace_back(static_cast<const char*>(sql));
    return 0;
  }

  inline static SqlTrace* current_ = nullptr;

  const WhenOpened whenOpened_;
  std::mutex mutex_;
  std::vector<std::string> statements_;  // guarded by mutex_
};

}  // namespace lirvox::test
