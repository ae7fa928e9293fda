// What the program says to people.
#pragma once

#include <cstddef>
#include <string>

namespace lirvox::tools {

/// Writes "lirvox: TEXT" to the standard error stream.
void complain(const std::string& text);

/// A number of seconds as people write it, 1:02:03 or 2:03; negative ones too.
std::string clockTime(double seconds);

/// A number and what it counts: "1 track", "2 tracks".
template <typename Number>
std::string counted(Number number, const std::string& noun) {
  return std::to_string(number) + ' ' + noun + (number == 1 ? "" : "s");
}

/// The first `most` characters of a UTF-8 text, and "..." if there are more.
std::string shortened(const std::string& text, std::size_t most);

/// Whether the reader of the standard output stream has gone away.
bool outputIsClosed();

}  // namespace lirvox::tools
