// Shell completion for the program, out of its commands.
#pragma once

#include <string>

#include "tools/CommandLine.h"

namespace lirvox::tools {

/// What to put into share/bash-completion/completions.
std::string bashCompletion(const Program& program);
/// What to put, as "_lirvox", into a folder of zsh's fpath.
std::string zshCompletion(const Program& program);
/// What to put into share/fish/vendor_completions.d.
std::string fishCompletion(const Program& program);

}  // namespace lirvox::tools
