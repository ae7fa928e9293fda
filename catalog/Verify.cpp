// Whether a database is sound: what `lirvox verify` does.
#include "catalog/Verify.h"

#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>

#include <sqlite3.h>

#include "catalog/CatalogFile.h"
#include "catalog/DeviceDatabase.h"
#include "catalog/Findings.h"
#include "catalog/RowVerification.h"

namespace lirvox::catalog {
namespace {

using Columns = std::set<std::string>;
using Schema = std::map<std::string, Columns>;

const Columns kRows = {"track_id", "num1", "num2"};
const Columns kTracks = {"track_id", "title", "artist", "path", "duration"};

Schema schemaOf(const std::string& kind) {
  if (kind == "database") return {{"db", kRows}};
  if (kind == "device database") return {{"db", kRows}, {"tracks", kTracks}};
  return {{"db", kRows},
          {"held", kRows},
          {"tracks", kTracks},
          {"sources", {"path", "track_id", "size", "modified"}},
          {"config", {"key", "value"}}};
}

class Verifier {
 public:
  Verifier(SQLite::Database& database, const ProgressHandler& progress)
      : database_(database), progress_(progress) {}

  Verification run();

 private:
  void checkAll();
  bool pagesAreSound();
  bool tablesAreThere();
  void checkClustering();
  void checkRows();
  void checkNotes(const HashCounts& counts);
  void checkHashCounts(const HashCounts& counts, std::uint32_t limit);
  void checkSources();
  std::optional<double> note(const std::string& key);
  void each(const char* what, const std::string& query);

  SQLite::Database& database_;
  const ProgressHandler& progress_;
  Findings findings_;
  std::string kind_ = "database";
};

Verification Verifier::run() {
  try {
    checkAll();
  } catch (const SQLite::Exception& error) {
    if (error.getErrorCode() != SQLITE_CORRUPT && error.getErrorCode() != SQLITE_NOTADB) throw;
    findings_.add("damages of the file", error.what());
  }
  return {kind_, findings_.all()};
}

void Verifier::checkAll() {
  const int id = database_.execAndGet("PRAGMA application_id").getInt();
  if (id == kApplicationId) kind_ = "catalogue";
  if (id == kDeviceApplicationId) kind_ = "device database";
  if (pagesAreSound() && tablesAreThere()) {
    checkClustering();
    checkRows();
    if (kind_ == "catalogue") checkSources();
  }
}

bool Verifier::pagesAreSound() {
  SQLite::Statement query(database_, "PRAGMA integrity_check");
  while (query.executeStep()) {
    // SQLite says of several pages in one message, below a line that names the database.
    std::istringstream message(query.getColumn(0).getString());
    for (std::string line; std::getline(message, line);) {
      if (line != "ok" && line.rfind("***", 0) != 0) findings_.add("damages of the file", line);
    }
  }
  return findings_.all().empty();
}

bool Verifier::tablesAreThere() {
  if (kind_ != "database" && database_.execAndGet("PRAGMA user_version").getInt() != kUserVersion) {
    findings_.add("versions that this lirvox does not know",
                  database_.execAndGet("PRAGMA user_version").getString());
    return false;
  }
  Schema expected = schemaOf(kind_);
  if (database_.tableExists("tracks")) expected["tracks"] = kTracks;
  for (const auto& [table, columns] : expected) {
    SQLite::Statement query(database_, "SELECT name FROM pragma_table_info(?)");
    query.bind(1, table);
    Columns missing = columns;
    while (query.executeStep()) missing.erase(query.getColumn(0).getString());
    for (const std::string& column : missing) {
      findings_.add("columns that are not there", table + '.' + column);
    }
  }
  return findings_.all().empty();
}

// A lookup must find a hash's rows without reading the others, and in lirvox's own files
// in one place.
void Verifier::checkClustering() {
  if (!isIndexedByHash(database_)) {
    findings_.add("tables without an index by hash, of which recognitions read all", "db");
  }
  if (kind_ == "database") return;
  each("tables that are not clustered by hash",
       "SELECT name FROM pragma_table_list WHERE schema = 'main' AND name IN ('db', 'held') AND "
       "(NOT wr OR (SELECT group_concat(info.name) FROM pragma_index_list(pragma_table_list.name) "
       "AS list, pragma_index_info(list.name) AS info WHERE list.origin = 'pk' AND info.seqno < 3) "
       "IS NOT 'num2,track_id,num1')");
}

void Verifier::checkRows() {
  RowVerification rows(database_, findings_);
  // Rows of common hashes are few: they hardly count.
  rows.read("db", progress_);
  const HashCounts inDb = rows.counts();
  if (kind_ != "catalogue") return;
  rows.read("held", [](double) {});
  checkNotes(rows.counts());
  const auto limit = note("common hash limit");
  for (std::uint32_t hash = 0; limit && hash < kHashes; ++hash) {
    const std::uint32_t all = rows.counts()[hash];
    if (inDb[hash] == (all > *limit ? 0 : all)) continue;
    findings_.add("hashes whose rows are in the wrong table", "hash " + std::to_string(hash));
  }
}

std::optional<double> Verifier::note(const std::string& key) {
  SQLite::Statement query(database_, "SELECT value FROM config WHERE key = ?");
  query.bind(1, key);
  if (query.executeStep() && query.getColumn(0).isFloat()) return query.getColumn(0).getDouble();
  return std::nullopt;
}

void Verifier::checkNotes(const HashCounts& counts) {
  const auto expect = [&](const std::string& key, const auto& fits) {
    const auto value = note(key);
    if (!value || !fits(*value)) findings_.add("notes that cannot be", key);
  };
  const auto whole = [](double value) { return value >= 0.0 && value == std::floor(value); };
  expect("alignments", [](double n) { return n == 1 || n == 2 || n == 4 || n == 8; });
  expect("rows per hour", whole);
  expect("common hashes", [](double factor) { return factor >= 0.0; });
  CommonHashRule rule;
  rule.timesMean = note("common hashes").value_or(rule.timesMean);
  const std::uint32_t limit = commonHashLimit(counts, rule);
  expect("common hash limit", [&](double value) { return value == limit; });
  checkHashCounts(counts, limit);
  each("notes that nobody knows",
       "SELECT key FROM config WHERE key NOT IN ('alignments', 'rows per hour', 'common hashes', "
       "'common hash limit', 'rows', 'held rows', 'hash_counts', '" +
           std::string(kLargestIdNote) + "')");
}

void Verifier::checkHashCounts(const HashCounts& counts, std::uint32_t limit) {
  SQLite::Statement query(database_, "SELECT value FROM config WHERE key = 'hash_counts'");
  HashCounts noted(kHashes);
  try {
    if (query.executeStep()) noted = unpack(query.getColumn(0).getString());
  } catch (const std::invalid_argument& error) {
    findings_.add("notes that cannot be", error.what());
  }
  double rows = 0.0;
  double held = 0.0;
  for (std::uint32_t hash = 0; hash < kHashes; ++hash) {
    (counts[hash] > limit ? held : rows) += counts[hash];
    if (counts[hash] == noted[hash]) continue;
    findings_.add("hashes with more or fewer rows than noted", "hash " + std::to_string(hash));
  }
  if (note("rows") != rows) findings_.add("notes that cannot be", "rows");
  if (note("held rows") != held) findings_.add("notes that cannot be", "held rows");
}

void Verifier::checkSources() {
  each("tracks without their file",
       "SELECT 'track ' || track_id FROM tracks WHERE NOT EXISTS (SELECT 1 FROM sources WHERE "
       "sources.path = tracks.path AND sources.track_id = tracks.track_id)");
  each("files without their track",
       "SELECT path FROM sources WHERE NOT EXISTS (SELECT 1 FROM tracks WHERE sources.path = "
       "tracks.path AND sources.track_id = tracks.track_id)");
}

// Adds every row of the query, which is an example.
void Verifier::each(const char* what, const std::string& query) {
  SQLite::Statement statement(database_, query);
  while (statement.executeStep()) findings_.add(what, statement.getColumn(0).getString());
}

}  // namespace

Verification verify(const std::string& path, const ProgressHandler& progress) {
  const auto database = openForReading(path);
  return naming(path, [&] { return Verifier(*database, progress).run(); });
}

}  // namespace lirvox::catalog
