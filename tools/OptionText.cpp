// What options look like to people, for the manual and the shells.
#include "tools/OptionText.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <sstream>
#include <string_view>

namespace lirvox::tools {
namespace {

template <class Value>
std::string shown(const Value& value) {
  std::ostringstream text;
  text << value;
  return text.str();
}
std::string shown(bool) {
  return {};
}
template <class Value>
std::string shown(const std::optional<Value>& value) {
  return value ? shown(*value) : std::string();
}
std::string shown(const std::vector<std::string>&) {
  return {};
}

template <std::size_t size>
bool isAmong(const std::array<std::string_view, size>& words, std::string_view word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

}  // namespace

std::vector<std::string> namesOf(const Option& option) {
  return split(option.names, ",");
}

bool isArgument(const Option& option) {
  return option.names.front() != '-';
}

bool isSwitch(const Option& option) {
  return std::holds_alternative<bool*>(option.value);
}

bool repeats(const Option& option) {
  return std::holds_alternative<std::vector<std::string>*>(option.value);
}

std::string valueName(const Option& option) {
  if (isSwitch(option)) return {};
  if (isArgument(option)) return option.names;
  std::string text = option.unit;
  for (const std::string& choice : option.choices) text += (text.empty() ? "" : "|") + choice;
  return text.empty() ? "VALUE" : text;
}

std::string defaultText(const Option& option) {
  if (!option.standard.empty()) return option.standard;
  const std::string text = std::visit([](auto* value) { return shown(*value); }, option.value);
  const char* const home = std::getenv("HOME");
  if (!home || text.rfind(std::string(home) + '/', 0) != 0) return text;
  return '~' + text.substr(std::string_view(home).size());
}

Offered offeredFor(const Option& option) {
  static constexpr std::array<std::string_view, 9> kFiles = {
      "ARCHIVE", "DATABASE", "FILE", "FILES", "MUSIC", "OUTPUT", "PART", "PATH", "RECORDING"};
  static constexpr std::array<std::string_view, 2> kFolders = {"DIR", "FOLDER"};
  const std::string name = valueName(option);
  if (!option.choices.empty()) return Offered::nothing;
  if (isAmong(kFolders, name)) return Offered::folders;
  return isAmong(kFiles, name) ? Offered::files : Offered::nothing;
}

Option helpOption() {
  static bool ignored = false;
  return {.names = "-h,--help", .value = &ignored, .help = "Print help and exit"};
}

std::string escaped(const std::string& text, const std::string& special) {
  std::string result;
  for (const char character : text) {
    if (special.find(character) != std::string::npos) result += '\\';
    result += character;
  }
  return result;
}

std::vector<std::string> split(const std::string& text, const std::string& separator) {
  std::vector<std::string> pieces;
  std::size_t begin = 0;
  for (std::size_t end; (end = text.find(separator, begin)) != std::string::npos;) {
    pieces.push_back(text.substr(begin, end - begin));
    begin = end + separator.size();
  }
  pieces.push_back(text.substr(begin));
  return pieces;
}

}  // namespace lirvox::tools
