// Whether a database can be used, told before anything else is tried.
#include "tools/DatabaseCheck.h"

#include <filesystem>

#include <SQLiteCpp/SQLiteCpp.h>

#include "tools/Console.h"

namespace lirvox::tools {

bool databaseIsUsable(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) {
    complain(path + ": no database there; lirvox index makes one");
    return false;
  }
  try {
    // Writable if it may be: what an interrupted run has left in a journal is put right.
    SQLite::Database database(path, SQLite::OPEN_READWRITE, 2'000);
    SQLite::Statement(database, "SELECT track_id, num1, num2 FROM db LIMIT 1").executeStep();
    return true;
  } catch (const SQLite::Exception& error) {
    complain(path + ": " + error.what());
    return false;
  }
}

}  // namespace lirvox::tools
