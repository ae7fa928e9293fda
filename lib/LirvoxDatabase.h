// The fingerprint store: a read-only gateway to one SQLite file.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Landmark.h"
#include "LirvoxError.h"
#include "LirvoxExport.h"
#include "LirvoxRowMap.h"

struct sqlite3;

namespace lirvox {

class LookupGuard;

namespace platform {
class Mutex;
}

/// Looks hashes up in a fingerprint file: any SQLite database with a table `db`
/// whose integer columns are `track_id`, `num1` (frame in the track) and `num2`
/// (hash). It never writes to the file and keeps it open only while it asks. A view
/// or a virtual table of that name counts as none.
///
/// `selectFingerprints` and `databaseInfo` may be called from any thread, one waits
/// for the other; all else belongs to one thread at a time. Both block for as long
/// as SQLite needs, and up to `maxBusyRetryTimeInterval` more on a locked file.
class LIRVOX_EXPORT LirvoxDatabase {
 public:
  /// A closed store for the file at `path`, which need not exist. None stands for an
  /// empty in-memory database, "" for an empty temporary one. Ends the process when
  /// SQLite was built without thread safety.
  explicit LirvoxDatabase(std::optional<std::string> path);
  ~LirvoxDatabase();

  LirvoxDatabase(const LirvoxDatabase&) = delete;
  LirvoxDatabase& operator=(const LirvoxDatabase&) = delete;

  /// Opens the file unless it is open. False, with a line in the log, when SQLite
  /// refuses.
  bool open();
  /// Closes the file, finalizing statements that were left behind. Always true.
  bool close();
  /// Whether the store is open; logs a line when not.
  bool databaseExists() const;
  /// The file name that SQLite is given.
  std::string sqlitePath() const;

  /// All rows whose hash occurs in `hashes`. None when the file cannot be opened or
  /// has no table `db`, or memory runs out; when reading fails half-way, the rows read so
  /// far. So, too, when there are more than 4,194,304 rows or when a damaged or hostile
  /// file takes more work than its size explains, which the log then says.
  std::optional<LirvoxRowMap> selectFingerprints(const std::vector<QueryHash>& hashes);

  /// Two lines for people: the size of the file at `LirvoxSettings::databasePath()`
  /// and the ids of the tracks in the store. None as for `selectFingerprints`.
  std::optional<std::string> databaseInfo();

  /// What SQLite says of the last failure on the open file.
  int lastErrorCode() const;
  std::string lastErrorMessage() const;
  /// An error of domain "FMDatabase" with the last error code and `message`.
  LirvoxError errorWithMessage(const std::string& message) const;

  /// How long a locked file is retried, in seconds; 0 or less fails at once.
  double maxBusyRetryTimeInterval() const { return maxBusyRetryTimeInterval_; }
  void setMaxBusyRetryTimeInterval(double seconds);

  /// Whether statements and their errors are logged. Every lookup sets this from
  /// `LirvoxSettings::traceExecutionQuery()`.
  bool traceExecution() const { return traceExecution_; }
  void setTraceExecution(bool trace) { traceExecution_ = trace; }

  /// The path takes effect when the file is next opened.
  const std::optional<std::string>& databasePath() const { return databasePath_; }
  void setDatabasePath(std::optional<std::string> path);

  /// Of the SQLite library that is in use.
  static std::string sqliteLibVersion();
  static bool isSQLiteThreadSafe();

 private:
  class Statement;
  class Closer;

  static int retryWhenBusy(void* store, int count);
  bool retry(int count);
  std::string description() const;
  Statement prepare(const std::string& sql);
  template <typename Use>
  void forEachRow(Statement& statement, Use use);

  // Held by selectFingerprints and databaseInfo.
  const std::unique_ptr<platform::Mutex> operation_;
  sqlite3* db_ = nullptr;
  std::unique_ptr<LookupGuard> guard_;  // of db_
  double maxBusyRetryTimeInterval_ = 2.0;
  std::chrono::steady_clock::time_point startBusyRetryTime_;
  bool traceExecution_ = false;
  std::optional<std::string> databasePath_;
};

}  // namespace lirvox
