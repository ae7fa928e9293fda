// The files that a command line names.
#include "tools/FileList.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

#include "tools/Console.h"

namespace lirvox::tools {
namespace {

namespace fs = std::filesystem;

class Collector {
 public:
  explicit Collector(std::size_t& failed) : failed_(failed) {}

  void add(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) return fail(path, "no such file or folder");
    fs::is_directory(status) ? addFolder(path) : addFile(path, true);
  }

  std::vector<ListedFile> files() && {
    std::vector<ListedFile> all;
    for (auto& [path, file] : files_) all.push_back(std::move(file));
    return all;
  }

 private:
  void addFolder(const std::string& folder) {
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, fs::directory_options::follow_directory_symlink,
                                           error);
    while (!error && entry != fs::recursive_directory_iterator()) {
      std::error_code ignored;
      if (entry->is_regular_file(ignored)) addFile(entry->path(), false);
      entry.increment(error);
    }
    if (error) fail(folder, error.message());
  }

  void addFile(const fs::path& path, bool named) {
    std::error_code error;
    const std::string absolute = fs::weakly_canonical(path, error).string();
    ListedFile& file = files_[error ? path.string() : absolute];
    file.path = error ? path.string() : absolute;
    file.named = file.named || named;
    file.stamp.size = static_cast<std::int64_t>(fs::file_size(path, error));
    file.stamp.modified = fs::last_write_time(path, error).time_since_epoch().count();
  }

  void fail(const std::string& path, const std::string& reason) {
    ++failed_;
    complain(path + ": " + reason);
  }

  std::size_t& failed_;
  std::map<std::string, ListedFile> files_;
};

}  // namespace

std::vector<ListedFile> listFiles(const std::vector<std::string>& paths, std::size_t& failed) {
  Collector collector(failed);
  for (const std::string& path : paths) collector.add(path);
  return std::move(collector).files();
}

}  // namespace lirvox::tools
