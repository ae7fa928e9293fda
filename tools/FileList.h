// The files that a command line names.
#pragma once

#include <string>
#include <vector>

#include "catalog/Catalog.h"

namespace lirvox::tools {

/// One file to be read.
struct ListedFile {
  std::string path;  ///< absolute
  catalog::FileStamp stamp;
  bool named = false;  ///< named on the command line itself, not found in a folder
};

/// The regular files at `paths`, folders with all that is in them, each file once, in
/// the order of their names. What cannot be read is complained of and counted in `failed`.
std::vector<ListedFile> listFiles(const std::vector<std::string>& paths, std::size_t& failed);

}  // namespace lirvox::tools
