// What keeps a fingerprint file from doing more than answering.
#include "lib/LookupGuard.h"

#include <algorithm>
#include <climits>
#include <filesystem>
#include <string>

#include <sqlite3.h>

#include "lib/platform/Platform.h"
#include "lib/platform/RunTask.h"

namespace lirvox {
namespace {

// Few while the schema is read, where a step may compile a whole text of it.
constexpr int kStepsBetweenLooks = 500;
constexpr int kStepsBetweenLooksAtSchema = 20;

// Of the longest text in a schema: two thousand columns, of which there cannot be more, fit.
constexpr int kLongestText = 1 << 18;

// A scan takes about one step of SQLite's machine per byte of the smallest rows, a lookup
// in an index a third of that, and each hash of a statement 3 steps for its 2 or more
// characters. Rows that a damaged tree repeats without end soon take more.
constexpr std::uint64_t kStepsPerByte = 8;
constexpr std::uint64_t kFreeSteps = 10000;

// Slower than any disk, and reached only by generated columns that work hard.
constexpr std::uint64_t kBytesPerSecond = 1U << 20;
constexpr std::uint64_t kFreeSeconds = 10;

// All that SQLite takes in the process, since it tells no other cheaply: ten times what a capture
// and any schema of sense take. A tree of expressions is much larger than its text, and rows of
// a damaged or hostile schema may share one.
constexpr std::uint64_t kFreeMemory = 128U << 20;
constexpr std::uint64_t kMemoryPerCharacter = 128;

std::uint64_t memoryUsed() {
  return static_cast<std::uint64_t>(sqlite3_memory_used());
}

std::uint64_t sizeOf(const std::string& path) {
  std::error_code error;
  const std::uint64_t bytes = std::filesystem::file_size(path, error);
  return error ? 0 : bytes;
}

}  // namespace

int openForReading(const std::string& path, sqlite3*& database) {
  const int result = sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READONLY, nullptr);
  if (result != SQLITE_CANTOPEN) return result;
  sqlite3_close(database);
  return sqlite3_open(path.c_str(), &database);
}

void restrictToTables(sqlite3* database) {
  for (const int option : {SQLITE_DBCONFIG_ENABLE_TRIGGER, SQLITE_DBCONFIG_ENABLE_VIEW,
                           SQLITE_DBCONFIG_TRUSTED_SCHEMA}) {
    sqlite3_db_config(database, option, 0, nullptr);
  }
  sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_drop_modules(database, nullptr);
  sqlite3_limit(database, SQLITE_LIMIT_LENGTH, kLongestText);
  sqlite3_limit(database, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 16);
  sqlite3_limit(database, SQLITE_LIMIT_ATTACHED, 0);
  // Whoever cuts a mapped file short ends the processes that read it.
  sqlite3_int64 mappedBytes = 0;
  sqlite3_file_control(database, "main", SQLITE_FCNTL_MMAP_SIZE, &mappedBytes);
}

LookupGuard::LookupGuard(sqlite3* database, const std::string& path)
    : database_(database), fileBytes_(sizeOf(path) + sizeOf(path + "-wal")) {
  restrictToTables(database);
}

void LookupGuard::lookEvery(int steps) {
  stepsBetweenLooks_ = steps;
  sqlite3_progress_handler(database_, steps, &LookupGuard::count, this);
}

void LookupGuard::begin(std::size_t length) {
  // Compiling takes no steps, but writes a generated column out wherever it is used: a chain
  // of them that use each other twice doubles with each.
  const std::uint64_t operations = kFreeSteps + kStepsPerByte * length;
  sqlite3_limit(database_, SQLITE_LIMIT_VDBE_OP,
                static_cast<int>(std::min<std::uint64_t>(operations, INT_MAX)));
  stepsLeft_ = kFreeSteps + kStepsPerByte * (fileBytes_ + length);
  mostMemory_ = memoryUsed() + kFreeMemory + kMemoryPerCharacter * length;
  end_.reset();
  lookEvery(kStepsBetweenLooksAtSchema);
}

void LookupGuard::refused(int result) {
  if (result != SQLITE_TOOBIG) return;
  platform::log("The schema of the database has a text of more than " +
                std::to_string(kLongestText >> 10) + " KiB; not read");
}

void LookupGuard::beginRows() {
  begin(0);
  mostMemory_ = UINT64_MAX;
  end_ = std::chrono::steady_clock::time_point::max();
  lookEvery(kStepsBetweenLooks);
}

void LookupGuard::compiled() {
  lookEvery(kStepsBetweenLooks);
  // The columns are numbers. Longer values would be sorted in temporary files, a thousand times
  // the size of the database; those that nobody asks for may be longer.
  sqlite3_limit(database_, SQLITE_LIMIT_LENGTH, 256);
}

int LookupGuard::count(void* guard) {
  bool isSpent = true;  // SQLite must not be thrown through
  platform::runLogged([&] { isSpent = static_cast<LookupGuard*>(guard)->isSpent(); });
  return isSpent ? 1 : 0;
}

bool LookupGuard::isSpent() {
  const auto now = std::chrono::steady_clock::now();
  // From the first look on: the wait for a lock is not the file's work.
  if (!end_) end_ = now + std::chrono::seconds(kFreeSeconds + fileBytes_ / kBytesPerSecond);
  const std::uint64_t steps = static_cast<std::uint64_t>(stepsBetweenLooks_);
  const bool takesMemory = memoryUsed() > mostMemory_;
  if (!takesMemory && stepsLeft_ >= steps && now <= *end_) {
    stepsLeft_ -= steps;
    return false;
  }
  platform::log(std::string("The database asks for more ") + (takesMemory ? "memory" : "work") +
                " than its size explains; stopped reading it");
  return true;
}

}  // namespace lirvox
