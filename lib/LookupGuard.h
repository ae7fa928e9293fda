// What keeps a fingerprint file from doing more than answering.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

struct sqlite3;

namespace lirvox {

/// Opens the file at `path` for reading only, so that a journal beside it is never
/// played back: that would change the file, and remove others that the journal names. A
/// file that cannot be opened so is left to `sqlite3_open`. Returns SQLite's result;
/// `database` is as SQLite sets it.
int openForReading(const std::string& path, sqlite3*& database);

/// Leaves of what the schema of the open connection `database` holds only its tables:
/// views and virtual tables cannot be asked, triggers do not run, and expressions are kept
/// small and call nothing that reaches outside.
void restrictToTables(sqlite3* database);

/// Guards one connection against what its file holds: views and virtual tables cannot be
/// asked, expressions of the schema are kept small, and a statement ends once it has done
/// more than any table in a file of that size can ask for. One thread at a time.
class LookupGuard {
 public:
  /// Takes effect on the open connection `database`, which must not outlive this object.
  LookupGuard(sqlite3* database, const std::string& path);
  LookupGuard(const LookupGuard&) = delete;
  LookupGuard& operator=(const LookupGuard&) = delete;

  /// A statement of `length` characters is about to be compiled and run.
  void begin(std::size_t length);

  /// A compiled statement on tables that hold rows and no expressions is about to be run. Only
  /// its steps are bounded: whoever asks may take any time and memory between two rows.
  void beginRows();

  /// It is not compiled: `result` is SQLite's. Logs what the file alone is to blame for.
  static void refused(int result);

  /// It is compiled, and the only one on the connection.
  void compiled();

 private:
  static int count(void* guard);
  bool isSpent();
  void lookEvery(int steps);

  sqlite3* const database_;
  const std::uint64_t fileBytes_;
  int stepsBetweenLooks_ = 0;
  std::uint64_t stepsLeft_ = 0;
  std::uint64_t mostMemory_ = 0;
  std::optional<std::chrono::steady_clock::time_point> end_;
};

}  // namespace lirvox
