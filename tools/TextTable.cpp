// Columns that stand below each other.
#include "tools/TextTable.h"

#include <algorithm>
#include <cstddef>

namespace lirvox::tools {
namespace {

constexpr std::size_t kWidestColumn = 40;

// In characters: the bytes that begin one.
std::size_t widthOf(const std::string& text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char byte) { return (byte & '\xC0') != '\x80'; }));
}

bool isNumber(const std::string& text) {
  return text.find_first_not_of("0123456789:.-") == std::string::npos;
}

std::string printable(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; },
      '?');
  return text;
}

}  // namespace

std::string alignedLines(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::min(kWidestColumn, std::max(widths[i], widthOf(row[i])));
    }
  }
  std::string lines;
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::size_t width = widthOf(row[i]);
      const std::string padding(widths[i] > width ? widths[i] - width : 0, ' ');
      const std::string cell = printable(row[i]);
      const bool isLast = i + 1 == row.size();
      lines += isNumber(row[i]) ? padding + cell : cell + (isLast ? "" : padding);
      lines += isLast ? "\n" : "  ";
    }
  }
  return lines;
}

std::string quotedCell(std::string text) {
  for (std::size_t at = 0; (at = text.find('"', at)) != std::string::npos; at += 2) {
    text.insert(at, 1, '"');
  }
  return '"' + text + '"';
}

}  // namespace lirvox::tools
