// Names of archive entries, which come from outside and are not trusted.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace lirvox {

/// A path below a destination, component by component.
using EntryPath = std::vector<std::string>;

/// The components of an entry's name without empty ones and "."; nothing if the
/// name could lead out of the destination (absolute, "..", backslash), is unreasonable
/// (a null byte, too long, too deep), or has a journal of a database in it, or a folder that is
/// named as a database. Folder names end in "/"; the name of the destination itself ("./") has
/// no components.
std::optional<EntryPath> entryPath(const std::string& name);

/// Whether the entry is an archive by its name: the extension, in lower case, is "zip".
bool isArchiveName(const std::string& lastComponent);

/// `name` for one line of a log: control characters replaced, shortened if long.
std::string printable(const std::string& name);

}  // namespace lirvox
