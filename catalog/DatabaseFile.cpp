// Opening databases that are there.
#include "catalog/DatabaseFile.h"

#include <filesystem>

#include "catalog/CatalogFile.h"

namespace lirvox::catalog {
namespace {

constexpr int kBusyTimeoutInMilliseconds = 2'000;

}  // namespace

SQLite::Database openForReading(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) {
    throw CatalogError(path + ": no database there; lirvox index makes one");
  }
  return naming(path, [&] {
    // SQLite can only undo what a killed process has left when it may write.
    SQLite::Database database(path, SQLite::OPEN_READWRITE, kBusyTimeoutInMilliseconds);
    database.exec("PRAGMA query_only = ON");
    return database;
  });
}

SQLite::Database openCatalogForReading(const std::string& path) {
  SQLite::Database database = openForReading(path);
  naming(path, [&] { expectCatalog(database, path); });
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

bool isIndexedByHash(SQLite::Database& database) {
  return database
             .execAndGet(
                 "SELECT count(*) FROM pragma_index_list('db') AS list, "
                 "pragma_index_info(list.name) AS info WHERE info.seqno = 0 AND info.name = 'num2' "
                 "AND list.partial = 0")
             .getInt() > 0;
}

}  // namespace lirvox::catalog
