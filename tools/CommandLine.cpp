// The parts that every command of the program is made of.
#include "tools/CommandLine.h"

#include <CLI/CLI.hpp>

#include "lib/LirvoxSettings.h"

namespace lirvox::tools {

void addDatabaseOption(CLI::App& command, std::string& path) {
  path = LirvoxSettings::databasePath();
  command.add_option("-d,--database", path, "Database file")->capture_default_str();
}

}  // namespace lirvox::tools
