// The folders and the log of the system.
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include "lib/LirvoxSettings.h"
#include "lib/platform/Platform.h"

namespace lirvox::platform {
namespace {

using Variables = std::map<std::string, std::string>;

// Sets the variables that folders depend on; those not named are taken away.
class Environment {
 public:
  explicit Environment(const Variables& variables) {
    for (const char* const name : {"LIRVOX_CACHES_DIR", "XDG_CACHE_HOME", "HOME"}) {
      if (const char* const value = std::getenv(name)) before_[name] = value;
      const auto wanted = variables.find(name);
      wanted == variables.end() ? ::unsetenv(name) : ::setenv(name, wanted->second.c_str(), 1);
    }
  }
  ~Environment() {
    for (const char* const name : {"LIRVOX_CACHES_DIR", "XDG_CACHE_HOME", "HOME"}) ::unsetenv(name);
    for (const auto& [name, value] : before_) ::setenv(name.c_str(), value.c_str(), 1);
  }

 private:
  Variables before_;
};

TEST(LinuxDirectories, FollowTheEnvironment) {
  const std::string home = ::getpwuid(::getuid())->pw_dir;
  struct Case {
    Variables variables;
    std::string application;
    std::string caches;
  };
  const std::vector<Case> cases = {
      {{{"LIRVOX_CACHES_DIR", "/c"}, {"XDG_CACHE_HOME", "/x"}, {"HOME", "/h"}}, "app", "/c"},
      {{{"LIRVOX_CACHES_DIR", "/c/d//"}}, "app", "/c/d"},
      {{{"LIRVOX_CACHES_DIR", "~/c"}, {"HOME", "/h"}}, "app", "/h/c"},
      {{{"LIRVOX_CACHES_DIR", ""}, {"XDG_CACHE_HOME", "/x"}, {"HOME", "/h"}}, "app", "/x/app"},
      {{{"XDG_CACHE_HOME", "/x/"}}, "app", "/x/app"},
      {{{"XDG_CACHE_HOME", "relative"}, {"HOME", "/h"}}, "app", "/h/.cache/app"},
      {{{"XDG_CACHE_HOME", ""}, {"HOME", "/h"}}, "", "/h/.cache/LinuxPlatformTest"},
      {{}, "app", home + "/.cache/app"},
  };
  for (const auto& [variables, application, caches] : cases) {
    const Environment environment(variables);
    const auto directories = systemPlatform(application).directories;
    EXPECT_EQ(directories->cachesDirectory(), caches);
  }
}

TEST(LinuxDirectories, ResolveARelativeFolderOnce) {
  const Environment environment(Variables{{"LIRVOX_CACHES_DIR", "caches"}});
  EXPECT_EQ(systemPlatform().directories->cachesDirectory(),
            std::filesystem::current_path() / "caches");
}

TEST(Settings, PutTheDatabaseIntoTheCachesDirectory) {
  const Environment environment(Variables{{"LIRVOX_CACHES_DIR", "/c"}});
  install(systemPlatform());
  EXPECT_EQ(LirvoxSettings::databasePath(), "/c/lirvox/db1.sqlite");
}

TEST(StandardErrorLog, WritesSingleLines) {
  install(systemPlatform());
  testing::internal::CaptureStderr();
  log("one");
  log("two");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "one\ntwo\n");
}

}  // namespace
}  // namespace lirvox::platform
