// Folders below a destination, opened without following links.
#pragma once

#include <string>
#include <system_error>

#include "../platform/FileDescriptor.h"
#include "EntryName.h"

namespace lirvox {

/// Opens the folder at `path`, making it and its parents when missing.
platform::FileDescriptor openDestination(const std::string& path, std::error_code& error);

/// Opens the folder `path` below `root`, making what is missing. A component that
/// is a link or no folder is an error.
platform::FileDescriptor openBelow(int root, const EntryPath& path, std::error_code& error);

}  // namespace lirvox
