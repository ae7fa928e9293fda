// Whether a database can be used, told before anything else is tried.
#pragma once

#include <string>

namespace lirvox::tools {

/// Whether `path` is a readable SQLite file with an ordinary table `db` of the right
/// columns; complains and returns false when not.
bool databaseIsUsable(const std::string& path);

}  // namespace lirvox::tools
