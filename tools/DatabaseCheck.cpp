// Whether a database can be used, told before anything else is tried.
#include "tools/DatabaseCheck.h"

#include "catalog/DatabaseFile.h"
#include "tools/Console.h"

namespace lirvox::tools {

bool databaseIsUsable(const std::string& path) {
  try {
    const auto database = catalog::openForReading(path);
    catalog::naming(path, [&] {
      SQLite::Statement(*database, "SELECT track_id, num1, num2 FROM db LIMIT 1").executeStep();
    });
    return true;
  } catch (const catalog::CatalogError& error) {
    complain(error.what());
  }
  return false;
}

}  // namespace lirvox::tools
