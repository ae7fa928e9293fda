// The application's folders, where a desktop user expects them.
#include "lib/platform/linux/XdgDirectories.h"

#include <cstdlib>
#include <filesystem>

#include <pwd.h>
#include <unistd.h>

namespace lirvox::platform {
namespace {

// An environment variable that is set and not empty, else an empty string.
std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value ? value : "";
}

std::string homeDirectory() {
  std::string home = environment("HOME");
  if (!home.empty()) return home;
  const passwd* const user = ::getpwuid(::getuid());
  return user ? user->pw_dir : "/tmp";
}

// As an absolute path without a trailing slash; a relative one starts where the program
// did. A tilde stands for the home folder, also in a setting that no shell has read.
std::string folderPath(const std::string& setting) {
  const bool atHome = setting == "~" || setting.rfind("~/", 0) == 0;
  std::string path =
      std::filesystem::absolute(atHome ? homeDirectory() + setting.substr(1) : setting);
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

// A base folder as XDG defines them: relative settings are ignored.
std::string xdgBase(const char* variable, const char* belowHome) {
  const std::string base = environment(variable);
  const bool isSet = !base.empty() && base.front() == '/';
  return folderPath(isSet ? base : homeDirectory() + '/' + belowHome);
}

std::string besideProgram(const std::string& below) {
  std::error_code ignored;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
  return (program.parent_path().parent_path() / below).string();
}

std::string firstSet(const std::string& chosen, const std::string& otherwise) {
  return folderPath(chosen.empty() ? otherwise : chosen);
}

}  // namespace

XdgDirectories::XdgDirectories(const std::string& applicationName)
    : FixedDirectories(firstSet(environment("LIRVOX_CACHES_DIR"),
                                xdgBase("XDG_CACHE_HOME", ".cache") + '/' + applicationName),
                       firstSet(environment("LIRVOX_CONFIG_DIR"),
                                xdgBase("XDG_CONFIG_HOME", ".config") + '/' + applicationName),
                       firstSet(environment("LIRVOX_RESOURCES_DIR"),
                                besideProgram("share/" + applicationName))) {}

}  // namespace lirvox::platform
