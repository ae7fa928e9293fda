// The manual pages of the program, out of its commands.
#pragma once

#include <string>

#include "tools/CommandLine.h"

namespace lirvox::tools {

/// The page of the whole program, for man(1).
std::string manualPage(const Program& program);
/// The page of one of its commands.
std::string manualPage(const Program& program, const Command& command);

}  // namespace lirvox::tools
