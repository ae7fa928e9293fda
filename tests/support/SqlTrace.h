// What SQLite does on connections that others open.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <sqlite3.h>

namespace lirvox::test {

/// Listens to every connection that is opened while it lives. One at a time.
class SqlTrace {
 public:
  using WhenOpened = std::function<void(sqlite3*)>;

  /// `whenOpened`, if any, is called with each new connection, on the thread that opens it.
  explicit SqlTrace(WhenOpened whenOpened = nullptr);
  ~SqlTrace();
  SqlTrace(const SqlTrace&) = delete;
  SqlTrace& operator=(const SqlTrace&) = delete;

  /// The statements that have run so far, which are then forgotten.
  std::vector<std::string> takeStatements();

 private:
  static int opened(sqlite3* connection, char**, const sqlite3_api_routines*);
  static int ran(unsigned, void* trace, void*, void* sql);

  const WhenOpened whenOpened_;
  std::mutex mutex_;
  std::vector<std::string> statements_;  // guarded by mutex_
};

}  // namespace lirvox::test
