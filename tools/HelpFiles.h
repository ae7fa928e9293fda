// Manual pages and shell completion, as files to be installed.
#pragma once

#include <string>

#include "tools/CommandLine.h"

namespace lirvox::tools {

/// Writes them into `folder`, in the place of earlier ones: "man1/*.1", "bash/lirvox",
/// "zsh/_lirvox" and "fish/lirvox.fish". Throws what `std::filesystem` throws, or
/// `std::runtime_error`.
void writeHelpFiles(const Program& program, const std::string& folder);

}  // namespace lirvox::tools
