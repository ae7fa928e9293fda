// Which way the includes run: tools -> catalog -> lib -> lib/platform, and bindings -> lib.
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

using Names = std::set<std::string>;

// What one file includes: the project's files from the root on, and all others.
struct Includes {
  Names own;
  Names foreign;
};

Includes includesOf(const fs::path& root, const fs::path& file) {
  Includes includes;
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("#include ", 0) != 0) continue;
    const std::string name = line.substr(10, line.find_last_of(">\"") - 10);
    const fs::path beside = file.parent_path() / name;
    const fs::path own = fs::exists(beside) ? beside : root / name;
    if (line.at(9) == '"' && fs::exists(own)) {
      includes.own.insert(own.lexically_normal().lexically_relative(root));
    } else {
      includes.foreign.insert(name);
    }
  }
  return includes;
}

class IncludeDirection : public testing::Test {
 protected:
  IncludeDirection() {
    const fs::path root = LIRVOX_SOURCE_DIR;
    for (const char* const room : {"lib", "catalog", "tools", "bindings"}) {
      for (const auto& entry : fs::recursive_directory_iterator(root / room)) {
        const auto extension = entry.path().extension();
        if (extension != ".h" && extension != ".cpp") continue;
        files_[entry.path().lexically_relative(root)] = includesOf(root, entry.path());
      }
    }
  }

  static bool isIn(const std::string& file, const std::string& folder) {
    return file.rfind(folder + '/', 0) == 0;
  }

  // How far up the road a file is.
  static int rank(const std::string& file) {
    if (isIn(file, "tools")) return 4;
    if (isIn(file, "catalog") || isIn(file, "bindings")) return 3;
    if (isIn(file, "lib/platform/linux")) return 1;
    return isIn(file, "lib/platform") ? 0 : 2;
  }

  // The project's files that `file` includes, directly or not.
  Names reachedFrom(const std::string& file) const {
    Names reached;
    Names next = {file};
    while (!next.empty()) {
      const std::string current = next.extract(next.begin()).value();
      if (!reached.insert(current).second) continue;
      next.insert(files_.at(current).own.begin(), files_.at(current).own.end());
    }
    return reached;
  }

  std::map<std::string, Includes> files_;
};

TEST_F(IncludeDirection, IsOneWay) {
  // Words of the library that the platform speaks, too.
  const Names shared = {"lib/LirvoxError.h", "lib/LirvoxExport.h"};
  std::size_t arrows = 0;
  for (const auto& [file, includes] : files_) {
    for (const std::string& included : includes.own) {
      ++arrows;
      const bool linux = rank(included) == 1 && rank(file) != 1;
      EXPECT_TRUE((rank(included) <= rank(file) || shared.count(included) > 0) && !linux)
          << file << " includes " << included;
    }
  }
  EXPECT_GT(arrows, 100U);
}

TEST_F(IncludeDirection, KeepsForeignHeadersInTheirRooms) {
  const std::map<std::string, Names> rooms = {
      {"lib/platform/linux", {"asio", "pulse/", "curl/"}},
      {"tools", {"libav", "libsw", "cairo", "pango", "CLI/"}}};
  for (const auto& [file, includes] : files_) {
    // What streams open gets into programs that are executed meanwhile.
    EXPECT_FALSE(isIn(file, "lib") && includes.foreign.count("fstream") > 0) << file;
    for (const auto& [room, prefixes] : rooms) {
      for (const std::string& prefix : prefixes) {
        const auto first = includes.foreign.lower_bound(prefix);
        EXPECT_TRUE(isIn(file, room) || first == includes.foreign.end() ||
                    first->rfind(prefix, 0) != 0)
            << file << " includes " << *first;
      }
    }
  }
}

TEST_F(IncludeDirection, LeavesTheSignalPathToArithmetic) {
  const Names forbidden = {
      "atomic",   "chrono", "condition_variable", "ctime",  "filesystem", "fstream",
      "iostream", "mutex",  "sqlite3.h",          "thread", "unistd.h"};
  const auto check = [&](const std::string& file) {
    for (const std::string& name : files_.at(file).own) {
      EXPECT_FALSE(isIn(name, "lib/platform")) << file << " includes " << name;
    }
    for (const std::string& name : files_.at(file).foreign) {
      EXPECT_EQ(forbidden.count(name), 0U) << file << " includes " << name;
    }
  };
  for (const char* const stage :
       {"LirvoxAudioFFT", "LirvoxMiniSpectogram", "LirvoxUtilities", "PeakPicking", "Filter",
        "Window", "Spectrogram", "Hits", "HitsByTrack", "Vote", "TrackOrder"}) {
    for (const std::string& file : reachedFrom("lib/" + std::string(stage) + ".cpp")) check(file);
  }
  // The end of a pass also asks the store, but nothing of the system by itself.
  for (const char* const file : {"lib/LirvoxRecognize.h", "lib/LirvoxRecognize.cpp"}) check(file);
}

}  // namespace
