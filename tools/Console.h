// What the program says to people.
#pragma once

#include <string>

namespace lirvox::tools {

/// Writes "lirvox: TEXT" to the standard error stream.
void complain(const std::string& text);

/// A number of seconds as people write it, 1:02:03 or 2:03; negative ones too.
std::string clockTime(double seconds);

/// Whether the reader of the standard output stream has gone away.
bool outputIsClosed();

}  // namespace lirvox::tools
