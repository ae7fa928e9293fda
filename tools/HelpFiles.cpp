// Manual pages and shell completion, as files to be installed.
#include "tools/HelpFiles.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "tools/Completion.h"
#include "tools/Manual.h"

namespace lirvox::tools {
namespace {

void write(const std::filesystem::path& path, const std::string& text) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) throw std::runtime_error(path.string() + ": cannot be written");
}

}  // namespace

void writeHelpFiles(const Program& program, const std::string& folder) {
  const std::filesystem::path root = folder;
  for (const char* const name : {"man1", "bash", "zsh", "fish"}) {
    std::filesystem::remove_all(root / name);
  }
  write(root / "man1/lirvox.1", manualPage(program));
  for (const Command& command : program.commands) {
    write(root / "man1" / ("lirvox-" + command.name + ".1"), manualPage(program, command));
  }
  write(root / "bash/lirvox", bashCompletion(program));
  write(root / "zsh/_lirvox", zshCompletion(program));
  write(root / "fish/lirvox.fish", fishCompletion(program));
}

}  // namespace lirvox::tools
