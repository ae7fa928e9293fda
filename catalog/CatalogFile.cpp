// The SQLite file behind a catalogue.
#include "catalog/CatalogFile.h"

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace lirvox::catalog {
namespace {

namespace fs = std::filesystem;

constexpr int kBusyTimeoutInMilliseconds = 10'000;

// Commits go through the file in its order, so that little of it is needed at a time.
constexpr const char* kCacheSize = "PRAGMA cache_size = -16384";

// Clustered on the hash: a lookup reads each hash's rows from one place, and a row
// takes 15 to 16 bytes, against 28 with a separate index.
constexpr const char* kTables = R"(
  CREATE TABLE db(track_id INTEGER NOT NULL, num1 INTEGER NOT NULL, num2 INTEGER NOT NULL,
                  PRIMARY KEY(num2, track_id, num1)) WITHOUT ROWID;
  CREATE TABLE held(track_id INTEGER NOT NULL, num1 INTEGER NOT NULL, num2 INTEGER NOT NULL,
                    PRIMARY KEY(num2, track_id, num1)) WITHOUT ROWID;
  CREATE TABLE tracks(track_id INTEGER PRIMARY KEY, title TEXT NOT NULL, artist TEXT NOT NULL,
                      path TEXT NOT NULL, duration REAL NOT NULL);
  CREATE TABLE sources(path TEXT PRIMARY KEY, track_id INTEGER NOT NULL, size INTEGER NOT NULL,
                       modified INTEGER NOT NULL) WITHOUT ROWID;
  CREATE TABLE config(key TEXT PRIMARY KEY, value NOT NULL) WITHOUT ROWID;
)";

// Makes what was written to `path`, a file or a folder, outlast a loss of power.
void synchronize(const std::string& path) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return;
  ::fsync(descriptor);
  ::close(descriptor);
}

std::string parentOf(const std::string& path) {
  const std::string parent = fs::path(path).parent_path().string();
  return parent.empty() ? "." : parent;
}

}  // namespace

CatalogFile::CatalogFile(std::string path) : path_(std::move(path)) {
  std::error_code ignored;
  const bool exists = fs::exists(path_, ignored) && fs::file_size(path_, ignored) > 0;
  try {
    naming(path_, [&] { exists ? openExisting() : createNew(); });
  } catch (...) {
    abandonNew();
    throw;
  }
}

CatalogFile::~CatalogFile() {
  abandonNew();
}

void CatalogFile::abandonNew() {
  if (unpublished_.empty()) return;
  database_.reset();
  std::error_code ignored;
  fs::remove(unpublished_, ignored);
  unpublished_.clear();
}

SQLite::Database& CatalogFile::database() {
  if (!database_) throw CatalogError(path_ + ": given up after an error");
  return *database_;
}

void CatalogFile::openExisting() {
  database_ =
      std::make_unique<SQLite::Database>(path_, SQLite::OPEN_READWRITE, kBusyTimeoutInMilliseconds);
  if (database_->execAndGet("PRAGMA application_id").getInt() != kApplicationId) {
    throw CatalogError(path_ + ": not a catalogue that lirvox index has made");
  }
  if (database_->execAndGet("PRAGMA user_version").getInt() != kUserVersion) {
    throw CatalogError(path_ + ": made by another version of lirvox");
  }
  database_->exec(kCacheSize);
}

void CatalogFile::createNew() {
  std::error_code error;
  fs::create_directories(parentOf(path_), error);
  unpublished_ = path_ + ".new-" + std::to_string(::getpid());
  fs::remove(unpublished_, error);
  database_ = std::make_unique<SQLite::Database>(
      unpublished_, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, kBusyTimeoutInMilliseconds);
  // A file that nobody knows of yet needs no journal.
  database_->exec("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF");
  database_->exec(kCacheSize);
  database_->exec("PRAGMA application_id = " + std::to_string(kApplicationId));
  database_->exec("PRAGMA user_version = " + std::to_string(kUserVersion));
  database_->exec(kTables);
}

std::optional<double> CatalogFile::note(const std::string& key) {
  SQLite::Statement query(database(), "SELECT value FROM config WHERE key = ?");
  query.bind(1, key);
  if (!query.executeStep()) return std::nullopt;
  return query.getColumn(0).getDouble();
}

void CatalogFile::setNote(const std::string& key, double value) {
  SQLite::Statement update(database(), "INSERT OR REPLACE INTO config VALUES(?, ?)");
  update.bind(1, key);
  update.bind(2, value);
  update.exec();
}

HashCounts CatalogFile::hashCounts() {
  SQLite::Statement query(database(), "SELECT value FROM config WHERE key = 'hash_counts'");
  if (!query.executeStep()) return HashCounts(kHashes);
  const SQLite::Column value = query.getColumn(0);
  try {
    return unpack(
        {static_cast<const char*>(value.getBlob()), static_cast<std::size_t>(value.getBytes())});
  } catch (const std::invalid_argument& error) {
    throw CatalogError(path_ + ": " + error.what());
  }
}

void CatalogFile::setHashCounts(const HashCounts& counts) {
  SQLite::Statement update(database(), "INSERT OR REPLACE INTO config VALUES('hash_counts', ?)");
  const std::string packed = pack(counts);
  update.bindNoCopy(1, packed.data(), static_cast<int>(packed.size()));
  update.exec();
}

void CatalogFile::publish() {
  if (unpublished_.empty()) return;
  database_.reset();
  synchronize(unpublished_);
  std::error_code error;
  fs::rename(unpublished_, path_, error);
  if (error) throw CatalogError(path_ + ": " + error.message());
  unpublished_.clear();
  synchronize(parentOf(path_));
  openExisting();
}

}  // namespace lirvox::catalog
