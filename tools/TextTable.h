// Columns that stand below each other.
#pragma once

#include <string>
#include <vector>

namespace lirvox::tools {

/// The lines of a table; cells of UTF-8. Control characters become "?", so that the names of
/// files cannot play tricks on a terminal. Numbers and times stand on the right. Very long
/// cells push the rest of their line aside.
std::string alignedLines(const std::vector<std::vector<std::string>>& rows);

/// A text as a cell of CSV, in quotes.
std::string quotedCell(std::string text);

}  // namespace lirvox::tools
