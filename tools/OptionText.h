// What options look like to people, for the manual and the shells.
#pragma once

#include <string>
#include <vector>

#include "tools/CommandLine.h"

namespace lirvox::tools {

/// The files that a shell offers as a value.
enum class Offered { nothing, files, folders };

/// Its names, with their dashes; the one name of an argument.
std::vector<std::string> namesOf(const Option& option);
/// Whether it has its place instead of a dash.
bool isArgument(const Option& option);
/// Whether it takes no value.
bool isSwitch(const Option& option);
/// Whether it takes several values.
bool repeats(const Option& option);
/// What stands for its value, as in FILE or text|json; empty for a switch.
std::string valueName(const Option& option);
/// Its default, empty when there is none. What is in the home folder starts with "~".
std::string defaultText(const Option& option);
/// What a shell offers for its value, by the name of that; nothing when it has choices.
Offered offeredFor(const Option& option);

/// The option that every command has besides its own.
Option helpOption();

/// `text` with each of the characters `special` after a backslash.
std::string escaped(const std::string& text, const std::string& special);
/// The pieces of `text` between the separators.
std::vector<std::string> split(const std::string& text, const std::string& separator);

}  // namespace lirvox::tools
