// An end to queries that would never come to one.
#pragma once

#include <chrono>

struct sqlite3;

namespace lirvox {

/// While it lives, what runs on the connection is interrupted once the time is over.
class QueryDeadline {
 public:
  QueryDeadline(sqlite3* connection, double seconds);
  ~QueryDeadline();
  QueryDeadline(const QueryDeadline&) = delete;
  QueryDeadline& operator=(const QueryDeadline&) = delete;

  bool hasPassed() const { return std::chrono::steady_clock::now() - start_ >= time_; }

 private:
  static int check(void* deadline);

  sqlite3* const connection_;
  const std::chrono::duration<double> time_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace lirvox
