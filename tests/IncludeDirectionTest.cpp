// Which way the includes run: tools -> catalog -> lib -> lib/platform, and bindings -> lib.
#include <regex>

#include "tests/support/Test.h"

namespace {

namespace fs = std::filesystem;

using Names = std::set<std::string>;

struct IncludeDirection : testing::Test {
  IncludeDirection() {
    for (const char* const room : {"lib", "catalog", "tools", "bindings"}) {
      for (const auto& entry : fs::recursive_directory_iterator(root_ / room)) {
        const auto extension = entry.path().extension();
        if (extension != ".h" && extension != ".cpp") continue;
        includes_[entry.path().lexically_relative(root_)] = includesOf(entry.path());
      }
    }
  }

  // The project's files from the root on, all others by the names that they are included with.
  Names includesOf(const fs::path& file) const {
    Names names;
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
      if (line.rfind("#include ", 0) != 0) continue;
      const std::string name = line.substr(10, line.find_last_of(">\"") - 10);
      const fs::path beside = (file.parent_path() / name).lexically_normal();
      const bool isBeside = line.at(9) == '"' && fs::exists(beside);
      names.insert(isBeside ? beside.lexically_relative(root_).string() : name);
    }
    return names;
  }

  // Adds the project's files that `file` includes, directly or not, and itself.
  void reach(const std::string& file, Names& reached) const {
    if (includes_.count(file) == 0 || !reached.insert(file).second) return;
    for (const std::string& name : includes_.at(file)) reach(name, reached);
  }

  void expectNone(const std::string& file, const std::regex& forbidden) const {
    for (const std::string& name : includes_.at(file)) {
      EXPECT_FALSE(std::regex_match(name, forbidden)) << file << " includes " << name;
    }
  }

  const fs::path root_ = LIRVOX_SOURCE_DIR;
  std::map<std::string, Names> includes_;
};

TEST_F(IncludeDirection, IsOneWayAndKeepsForeignHeadersInTheirRooms) {
  const std::pair<const char*, const char*> rules[] = {
      // What streams open gets into programs that are executed meanwhile.
      {"lib/.*", "(catalog|tools|bindings)/.*|fstream"},
      {"catalog/.*", "(tools|bindings)/.*"},
      {"bindings/.*", "(catalog|tools)/.*"},
      // Words of the library that the platform speaks, too.
      {"lib/platform/.*", "lib/(?!platform/|LirvoxError.h|LirvoxExport.h).*"},
      {"(?!lib/platform/linux/).*", "(lib/platform/linux/|asio|pulse/|curl/).*"},
      {"(?!tools/).*", "(libav|libsw|cairo|pango|CLI/).*"},
  };
  EXPECT_GT(includes_.at("lib/Lirvox.cpp").count("lib/Lirvox.h"), 0U) << "nothing is seen";
  for (const auto& [files, forbidden] : rules) {
    for (const auto& [file, includes] : includes_) {
      if (std::regex_match(file, std::regex(files))) expectNone(file, std::regex(forbidden));
    }
  }
}

TEST_F(IncludeDirection, LeavesTheSignalPathToArithmetic) {
  const std::regex forbidden(
      "lib/platform/.*|atomic|chrono|condition_variable|ctime|filesystem|fstream|iostream|mutex|"
      "sqlite3.h|thread|unistd.h");
  Names reached;
  for (const char* const stage :
       {"LirvoxAudioFFT", "LirvoxMiniSpectogram", "LirvoxUtilities", "PeakPicking", "Filter",
        "Window", "Spectrogram", "Hits", "HitsByTrack", "Vote", "TrackOrder"}) {
    ASSERT_EQ(includes_.count("lib/" + std::string(stage) + ".cpp"), 1U) << stage;
    reach("lib/" + std::string(stage) + ".cpp", reached);
  }
  for (const std::string& file : reached) expectNone(file, forbidden);
  // The end of a pass also asks the store, but nothing of the system by itself.
  for (const char* const file : {"lib/LirvoxRecognize.h", "lib/LirvoxRecognize.cpp"}) {
    expectNone(file, forbidden);
  }
}

}  // namespace
