// Opening databases that are there.
#include "catalog/DatabaseFile.h"

#include <filesystem>

#include <sqlite3.h>

#include "catalog/CatalogFile.h"
#include "lib/LookupGuard.h"

namespace lirvox::catalog {
namespace {

constexpr int kBusyTimeoutInMilliseconds = 2'000;

// What makes more of a table than its rows, and would work while they are read or written.
constexpr const char* kOddities = R"(
  SELECT type FROM pragma_table_list(?1) WHERE schema = 'main' AND type <> 'table'
  UNION ALL SELECT 'generated columns' FROM pragma_table_xinfo(?1) WHERE hidden > 0
  UNION ALL SELECT iif(list.partial, 'a partial index', 'an index on expressions')
    FROM pragma_index_list(?1) AS list,
    pragma_index_xinfo(list.name) AS info WHERE info.cid = -2 OR list.partial)";

// A connection and what guards it, for as long as either is used.
struct Reader {
  explicit Reader(const std::string& path)
      : database(path, SQLite::OPEN_READONLY, kBusyTimeoutInMilliseconds) {
    guard = std::make_unique<LookupGuard>(database.getHandle(), path);
    guard->begin(0);
    try {
      expectOrdinaryTables(database, path);
    } catch (const SQLite::Exception& error) {
      // Every reading of a damaged schema fails alike; lirvox verify tells more.
      const int code = error.getErrorCode();
      if (code != SQLITE_CORRUPT && code != SQLITE_NOTADB) throw;
    }
    sqlite3_trace_v2(database.getHandle(), SQLITE_TRACE_STMT, &Reader::begin, this);
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  // Called whenever a statement starts to run: each may do as much as the file explains.
  static int begin(unsigned /*event*/, void* reader, void* /*statement*/, void* /*text*/) {
    static_cast<Reader*>(reader)->guard->beginRows();
    return 0;
  }

  std::unique_ptr<LookupGuard> guard;  // outlives the connection
  SQLite::Database database;
};

}  // namespace

void expectDatabase(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::exists(path, ignored)) return;
  throw CatalogError(path + ": no database there; lirvox index makes one");
}

std::shared_ptr<SQLite::Database> openForReading(const std::string& path) {
  expectDatabase(path);
  return naming(path, [&] {
    const auto reader = std::make_shared<Reader>(path);
    return std::shared_ptr<SQLite::Database>(reader, &reader->database);
  });
}

std::shared_ptr<SQLite::Database> openCatalogForReading(const std::string& path) {
  auto database = openForReading(path);
  naming(path, [&] { expectCatalog(*database, path); });
  return database;
}

void expectCatalog(SQLite::Database& database, const std::string& path) {
  if (database.execAndGet("PRAGMA application_id").getInt() != kApplicationId) {
    throw CatalogError(path + ": not a catalogue that lirvox index has made");
  }
  if (database.execAndGet("PRAGMA user_version").getInt() != kUserVersion) {
    throw CatalogError(path + ": made by another version of lirvox");
  }
}

void expectOrdinaryTables(SQLite::Database& database, const std::string& path) {
  for (const char* const table : {"db", "held", "tracks", "sources", "config"}) {
    SQLite::Statement oddities(database, kOddities);
    oddities.bind(1, table);
    if (!oddities.executeStep()) continue;
    throw CatalogError(path + ": " + table + " is no ordinary table (" +
                       oddities.getColumn(0).getString() + ")");
  }
  // No expression is left that could make long values: those that are stored may be read.
  constexpr int kMostBytes = 1 << 24;
  sqlite3_limit(database.getHandle(), SQLITE_LIMIT_LENGTH, kMostBytes);
}

bool isIndexedByHash(SQLite::Database& database) {
  return database
             .execAndGet(
                 "SELECT count(*) FROM pragma_index_list('db') AS list, "
                 "pragma_index_info(list.name) AS info WHERE info.seqno = 0 AND info.name = 'num2' "
                 "AND list.partial = 0")
             .getInt() > 0;
}

std::string reasonOf(const SQLite::Exception& error) {
  if (error.getExtendedErrorCode() == SQLITE_READONLY_ROLLBACK) {
    return "a change of it was interrupted: its journal lies beside it. Whoever writes it must "
           "undo that first; lirvox index, remove and rename do";
  }
  if (error.getErrorCode() == SQLITE_INTERRUPT) return "asks for more work than its size explains";
  return error.what();
}

}  // namespace lirvox::catalog
