// The SQLite file behind a catalogue.
#include "catalog/CatalogFile.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "lib/LookupGuard.h"

namespace lirvox::catalog {
namespace {

namespace fs = std::filesystem;

constexpr int kBusyTimeoutInMilliseconds = 10'000;
constexpr const char* kLimitNote = "common hash limit";

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

// The journal that an interrupted change has left is played back. At the end of one that more
// databases than one take part in stands the name of a file, which SQLite then removes; lirvox
// leaves no such journal.
void expectOwnJournal(const std::string& path) {
  constexpr std::string_view kEndWithName = "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7";
  std::ifstream journal(path + "-journal", std::ios::binary);
  std::array<char, kEndWithName.size()> end{};
  journal.seekg(-static_cast<std::streamoff>(end.size()), std::ios::end);
  if (!journal.read(end.data(), end.size())) return;
  if (std::string_view(end.data(), end.size()) != kEndWithName) return;
  throw CatalogError(path + "-journal: not left by lirvox, and would remove a file; delete it");
}

std::string parentOf(const std::string& path) {
  const std::string parent = fs::path(path).parent_path().string();
  return parent.empty() ? "." : parent;
}

}  // namespace

CatalogFile::CatalogFile(std::string path, Which which) : path_(std::move(path)) {
  std::error_code ignored;
  const bool exists = fs::exists(path_, ignored) && fs::file_size(path_, ignored) > 0;
  const bool isNew = which == Which::created || (which == Which::existingOrNew && !exists);
  naming(path_, [&] { isNew ? createNew() : openExisting(); });
}

void CatalogFile::abandonNew() {
  if (!unpublished_) return;
  database_.reset();
  unpublished_ = {};
}

SQLite::Database& CatalogFile::database() {
  if (!database_) throw CatalogError(path_ + ": given up after an error");
  return *database_;
}

void CatalogFile::openExisting() {
  expectDatabase(path_);
  expectOwnJournal(path_);
  database_ =
      std::make_unique<SQLite::Database>(path_, SQLite::OPEN_READWRITE, kBusyTimeoutInMilliseconds);
  restrictToTables(database_->getHandle());
  expectCatalog(*database_, path_);
  expectOrdinaryTables(*database_, path_);
  database_->exec("PRAGMA ignore_check_constraints = ON");  // it has none of ours
  database_->exec(kCacheSize);
}

void CatalogFile::createNew() {
  const std::string folder = parentOf(path_);
  std::error_code error;
  fs::create_directories(folder, error);
  platform::removeAbandonedFiles(folder);
  unpublished_ = platform::TemporaryFile::createIn(folder, error);
  if (error) throw CatalogError(path_ + ": " + error.message());
  database_ = std::make_unique<SQLite::Database>(
      folder + '/' + unpublished_.name(), SQLite::OPEN_READWRITE, kBusyTimeoutInMilliseconds);
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

void CatalogFile::setHashCounts(const HashCounts& counts, std::uint32_t limit) {
  SQLite::Statement update(database(), "INSERT OR REPLACE INTO config VALUES('hash_counts', ?)");
  const std::string packed = pack(counts);
  update.bindNoCopy(1, packed.data(), static_cast<int>(packed.size()));
  update.exec();
  double rows = 0.0;
  double heldRows = 0.0;
  for (const std::uint32_t count : counts) (count > limit ? heldRows : rows) += count;
  setNote(kLimitNote, limit);
  setNote("rows", rows);
  setNote("held rows", heldRows);
}

std::uint32_t CatalogFile::commonHashLimit() {
  return asNumber<std::uint32_t>(
      note(kLimitNote).value_or(std::numeric_limits<std::uint32_t>::max()));
}

void CatalogFile::publish() {
  if (!unpublished_) return;
  database_.reset();
  // A journal of a file that had this name would be taken for the new one's.
  std::error_code error;
  fs::remove(path_ + "-journal", error);
  error = unpublished_.moveTo(fs::path(path_).filename());
  if (error) throw CatalogError(path_ + ": " + error.message());
  openExisting();
}

void expectWritableCatalog(const std::string& path) {
  CatalogFile(path, CatalogFile::Which::existing);
}

}  // namespace lirvox::catalog
