// The fingerprint store: a read-only gateway to one SQLite file.
#include "lib/LirvoxDatabase.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <memory>
#include <random>
#include <utility>

#include <sqlite3.h>

#include "lib/Assertion.h"
#include "lib/LirvoxSettings.h"
#include "lib/LookupGuard.h"
#include "lib/platform/Mutex.h"
#include "lib/platform/Platform.h"
#include "lib/platform/RunTask.h"

namespace lirvox {

using platform::log;

// A prepared statement, or none when it did not prepare.
class LirvoxDatabase::Statement {
 public:
  explicit Statement(sqlite3_stmt* statement) : statement_(statement) {}

  explicit operator bool() const { return statement_ != nullptr; }
  bool step() { return sqlite3_step(statement_.get()) == SQLITE_ROW; }
  std::int32_t column(int index) { return sqlite3_column_int(statement_.get(), index); }

 private:
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

namespace {

// The most rows that one query may give, 12 bytes each. Databases of any sense give far less;
// a damaged or hostile one must not take all memory.
constexpr std::size_t kMostRows = std::size_t{1} << 22;

// The hashes of the distinct pairs, as a list for SQL. A hash that occurs at several
// times occurs as often in the list. Ascending, so that neighbours in the file are
// read together.
std::string hashList(std::vector<QueryHash> hashes) {
  std::sort(hashes.begin(), hashes.end(), [](const QueryHash& a, const QueryHash& b) {
    return a.hash != b.hash ? a.hash < b.hash : a.time < b.time;
  });
  hashes.erase(std::unique(hashes.begin(), hashes.end()), hashes.end());
  std::string list;
  std::array<char, 12> text{};
  for (const QueryHash& query : hashes) {
    if (!list.empty()) list += ',';
    list.append(text.data(), std::to_chars(text.data(), text.data() + text.size(), query.hash).ptr);
  }
  return list;
}

std::string fileSizeLine(const std::string& path) {
  std::error_code ignored;
  const auto bytes = std::filesystem::file_size(path, ignored);
  const float megabytes = (ignored ? 0.0F : static_cast<float>(bytes)) / 1024.0F / 1024.0F;
  // As "%2f" prints it, but with a point whatever locale the host has set.
  std::array<char, 64> text{};
  const auto result =
      std::to_chars(text.begin(), text.end(), megabytes, std::chars_format::fixed, 6);
  return "DB size: " + std::string(text.begin(), result.ptr) + " Mb";
}

// SQLite would make an empty file in the place of one that is not there, and updates would
// take that for the database. (It does not where there is no folder either, and says so.)
bool isMissing(const std::string& path) {
  std::error_code error;
  if (std::filesystem::exists(path, error) || error) return false;
  if (!std::filesystem::exists(std::filesystem::absolute(path, error).parent_path(), error)) {
    return false;
  }
  log(path + ": no such database");
  return true;
}

// SQLite would wait for a pipe or a terminal, also for one that lies beside the file.
bool isPipe(const std::string& path) {
  std::error_code error;
  for (const std::string& file : {path, path + "-journal", path + "-wal"}) {
    const auto type = std::filesystem::status(file, error).type();
    if (type != std::filesystem::file_type::fifo && type != std::filesystem::file_type::character) {
      continue;
    }
    log(file + ": a pipe or a device in the place of a file");
    return true;
  }
  return false;
}

bool isNoFile(const std::optional<std::string>& path) {
  return path && !path->empty() && (isMissing(*path) || isPipe(*path));
}

int randomSleepInMilliseconds() {
  static thread_local std::minstd_rand generator{std::random_device{}()};
  return std::uniform_int_distribution<int>(50, 99)(generator);
}

}  // namespace

LirvoxDatabase::LirvoxDatabase(std::optional<std::string> path)
    : operation_(std::make_unique<platform::Mutex>()), databasePath_(std::move(path)) {
  if (!isSQLiteThreadSafe()) failAssertion("sqlite3_threadsafe()", "lib/LirvoxDatabase", 26);
}

LirvoxDatabase::~LirvoxDatabase() {
  close();
}

bool LirvoxDatabase::open() {
  if (db_) return true;
  const int result = openForReading(sqlitePath(), db_);
  if (result != SQLITE_OK) {
    log("error opening!: " + std::to_string(result));
    return false;
  }
  guard_ = std::make_unique<LookupGuard>(db_, sqlitePath());
  if (maxBusyRetryTimeInterval_ > 0.0) setMaxBusyRetryTimeInterval(maxBusyRetryTimeInterval_);
  return true;
}

bool LirvoxDatabase::close() {
  if (!db_) return true;
  bool swept = false;
  for (bool again = true; again;) {
    again = false;
    const int result = sqlite3_close(db_);
    if (result == SQLITE_BUSY || result == SQLITE_LOCKED) {
      if (swept) break;
      swept = true;
      while (sqlite3_stmt* const leaked = sqlite3_next_stmt(db_, nullptr)) {
        log("Closing leaked statement");
        sqlite3_finalize(leaked);
        again = true;
      }
    } else if (result != SQLITE_OK) {
      log("error closing!: " + std::to_string(result));
    }
  }
  db_ = nullptr;
  guard_.reset();
  return true;
}

bool LirvoxDatabase::databaseExists() const {
  if (db_) return true;
  log("The Database " + description() + " is not open.");
  return false;
}

std::string LirvoxDatabase::sqlitePath() const {
  return databasePath_.value_or(":memory:");
}

std::string LirvoxDatabase::description() const {
  return "<LirvoxDatabase: " + sqlitePath() + ">";
}

// Closes the store when an operation ends, however it ends: what could not be opened leaves a
// handle behind that would keep the next operation from trying again.
class LirvoxDatabase::Closer {
 public:
  explicit Closer(LirvoxDatabase& store) : store_(store) {}
  ~Closer() { store_.close(); }
  Closer(const Closer&) = delete;
  Closer& operator=(const Closer&) = delete;

 private:
  LirvoxDatabase& store_;
};

std::optional<LirvoxRowMap> LirvoxDatabase::selectFingerprints(
    const std::vector<QueryHash>& hashes) {
  const platform::MutexLock lock(*operation_);
  if (isNoFile(databasePath_)) return std::nullopt;
  const Closer closer(*this);
  if (!open() || !databaseExists()) return std::nullopt;
  traceExecution_ = LirvoxSettings::traceExecutionQuery();
  std::optional<LirvoxRowMap> map;
  platform::runLogged([&] {
    Statement statement = prepare(
        "SELECT track_id AS id, num1 AS  time_in_track, num2 AS hash FROM db WHERE num2 IN (" +
        hashList(hashes) + ")");
    if (!statement) return;
    std::vector<LirvoxDBRow> rows;
    forEachRow(statement, [&] {
      rows.push_back({DecimalString(statement.column(0)), DecimalString(statement.column(1)),
                      DecimalString(statement.column(2))});
    });
    map.emplace(std::move(rows));
  });
  return map;
}

std::optional<std::string> LirvoxDatabase::databaseInfo() {
  const platform::MutexLock lock(*operation_);
  if (isNoFile(databasePath_)) return std::nullopt;
  const Closer closer(*this);
  if (!open() || !databaseExists()) return std::nullopt;
  std::optional<std::string> info;
  platform::runLogged([&] {
    Statement statement = prepare("SELECT track_id FROM db GROUP BY track_id");
    if (!statement) return;
    std::string ids;
    forEachRow(statement, [&] {
      if (!ids.empty()) ids += ',';
      ids += std::to_string(statement.column(0));
    });
    // The path of the database is deliberately no part of the summary.
    info = fileSizeLine(LirvoxSettings::databasePath()) + "\nVideo id's: " + ids;
  });
  return info;
}

// Ends where the file is damaged, too, and where the guard has had enough.
template <typename Use>
void LirvoxDatabase::forEachRow(Statement& statement, Use use) {
  for (std::size_t rows = 0; statement.step(); ++rows) {
    if (rows == kMostRows) {
      log("The database has too many rows: only the first " + std::to_string(rows) + " are used");
      return;
    }
    use();
  }
}

LirvoxDatabase::Statement LirvoxDatabase::prepare(const std::string& sql) {
  if (traceExecution_) log("executeQuery: " + sql);
  // A connection that SQLite refused has no guard, and prepares nothing.
  if (guard_) guard_->begin(sql.size());
  sqlite3_stmt* statement = nullptr;
  const int result = sqlite3_prepare_v2(db_, sql.c_str(), -1, &statement, nullptr);
  if (result == SQLITE_OK) {
    if (guard_) guard_->compiled();
    return Statement(statement);
  }
  LookupGuard::refused(result);
  if (traceExecution_) {
    log("DB Error: " + std::to_string(lastErrorCode()) + " \"" + lastErrorMessage() + '"');
    log("DB Query: " + sql);
    log("DB Path: " + databasePath_.value_or("(null)"));
  }
  sqlite3_finalize(statement);
  close();
  return Statement(nullptr);
}

int LirvoxDatabase::lastErrorCode() const {
  return sqlite3_errcode(db_);
}

std::string LirvoxDatabase::lastErrorMessage() const {
  return sqlite3_errmsg(db_);
}

LirvoxError LirvoxDatabase::errorWithMessage(const std::string& message) const {
  return {"FMDatabase", lastErrorCode(), message};
}

void LirvoxDatabase::setMaxBusyRetryTimeInterval(double seconds) {
  maxBusyRetryTimeInterval_ = seconds;
  if (!db_) return;
  if (seconds > 0.0) {
    sqlite3_busy_handler(db_, &LirvoxDatabase::retryWhenBusy, this);
  } else {
    sqlite3_busy_handler(db_, nullptr, nullptr);
  }
}

void LirvoxDatabase::setDatabasePath(std::optional<std::string> path) {
  databasePath_ = std::move(path);
}

int LirvoxDatabase::retryWhenBusy(void* store, int count) {
  bool again = false;  // SQLite must not be thrown through
  platform::runLogged([&] { again = static_cast<LirvoxDatabase*>(store)->retry(count); });
  return again ? 1 : 0;
}

// Time is measured on a clock that nobody sets: a wait must end even when the date changes.
bool LirvoxDatabase::retry(int count) {
  const auto now = std::chrono::steady_clock::now();
  if (count == 0) {
    startBusyRetryTime_ = now;
    return true;
  }
  const std::chrono::duration<double> elapsed = now - startBusyRetryTime_;
  if (elapsed.count() >= maxBusyRetryTimeInterval_) return false;
  const int requested = randomSleepInMilliseconds();
  const int slept = sqlite3_sleep(requested);
  if (slept != requested) {
    log("WARNING: Requested sleep of " + std::to_string(requested) +
        " milliseconds, but SQLite returned " + std::to_string(slept) +
        ". Maybe SQLite wasn't built with HAVE_USLEEP=1?");
  }
  return true;
}

std::string LirvoxDatabase::sqliteLibVersion() {
  return sqlite3_libversion();
}

bool LirvoxDatabase::isSQLiteThreadSafe() {
  return sqlite3_threadsafe() != 0;
}

}  // namespace lirvox
