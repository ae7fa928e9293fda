// Whether a database can be used, told before anything else is tried.
#include "tools/DatabaseCheck.h"

#include "catalog/DatabaseFile.h"
#include "tools/Console.h"

namespace lirvox::tools {

bool databaseIsUsable(const std::string& path) {
  try {
    SQLite::Database database = catalog::openForReading(path);
    SQLite::Statement(database, "SELECT track_id, num1, num2 FROM db LIMIT 1").executeStep();
    return true;
  } catch (const catalog::CatalogError& error) {
    complain(error.what());
  } catch (const SQLite::Exception& error) {
    complain(path + ": " + error.what());
  }
  return false;
}

}  // namespace lirvox::tools
