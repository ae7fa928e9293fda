// The folders, the log and the user defaults of the system.
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "lib/LirvoxSettings.h"
#include "lib/platform/Platform.h"
#include "lib/platform/linux/JsonUserDefaults.h"
#include "tests/support/TestPlatform.h"

namespace lirvox::platform {
namespace {

using Variables = std::map<std::string, std::string>;

// Sets the variables that folders depend on; those not named are taken away.
void setEnvironment(const Variables& variables) {
  for (const char* const name : {"LIRVOX_CACHES_DIR", "XDG_CACHE_HOME", "HOME"}) {
    const auto wanted = variables.find(name);
    wanted == variables.end() ? ::unsetenv(name) : ::setenv(name, wanted->second.c_str(), 1);
  }
}

TEST(LinuxDirectories, FollowTheEnvironment) {
  const std::string home = ::getpwuid(::getuid())->pw_dir;
  const std::string here = std::filesystem::current_path();
  const std::tuple<Variables, const char*, std::string> cases[] = {
      {{{"LIRVOX_CACHES_DIR", "/c"}, {"XDG_CACHE_HOME", "/x"}, {"HOME", "/h"}}, "app", "/c"},
      {{{"LIRVOX_CACHES_DIR", "/c/d//"}}, "app", "/c/d"},
      {{{"LIRVOX_CACHES_DIR", "relative"}}, "app", here + "/relative"},
      {{{"LIRVOX_CACHES_DIR", "~/c"}, {"HOME", "/h"}}, "app", "/h/c"},
      {{{"LIRVOX_CACHES_DIR", ""}, {"XDG_CACHE_HOME", "/x"}, {"HOME", "/h"}}, "app", "/x/app"},
      {{{"XDG_CACHE_HOME", "/x/"}}, "app", "/x/app"},
      {{{"XDG_CACHE_HOME", "relative"}, {"HOME", "/h"}}, "app", "/h/.cache/app"},
      {{{"XDG_CACHE_HOME", ""}, {"HOME", "/h"}}, "", "/h/.cache/LinuxPlatformTest"},
      {{}, "app", home + "/.cache/app"},
  };
  for (const auto& [variables, application, caches] : cases) {
    setEnvironment(variables);
    install(systemPlatform(application));
    EXPECT_EQ(current()->directories->cachesDirectory(), caches);
    EXPECT_EQ(LirvoxSettings::databasePath(), caches + "/lirvox/db1.sqlite");
  }
}

TEST(StandardErrorLog, WritesSingleLines) {
  install(systemPlatform());
  testing::internal::CaptureStderr();
  log("one");
  log("two");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "one\ntwo\n");
}

struct UserDefaultsTest : testing::Test {
  // What is stored in the place of something useless reaches others.
  void expectToWork(JsonUserDefaults& defaults) const {
    defaults.setString("new", "stamp");
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(JsonUserDefaults(path_).stringForKey("stamp"), "new");
  }

  const test::TestPlatform platform_;
  const std::string path_ = platform_.folder.path("made/when/missing/defaults.json");
};

TEST_F(UserDefaultsTest, ValuesReachOtherProcessesOnceSynchronizedAndLeaveTheirsAlone) {
  JsonUserDefaults ours(path_);
  JsonUserDefaults theirs(path_);
  ours.setString("2026-05-04 \"x\"", "stamp");
  EXPECT_EQ(ours.stringForKey("stamp"), "2026-05-04 \"x\"");
  EXPECT_EQ(theirs.stringForKey("stamp"), std::nullopt);
  EXPECT_TRUE(ours.synchronize());
  EXPECT_EQ(theirs.stringForKey("stamp"), "2026-05-04 \"x\"");

  test::writeFile(path_, R"({"stamp": "1", "number": -1.5, "none": null})");
  theirs.setString("2", "other");
  EXPECT_TRUE(theirs.synchronize());
  EXPECT_EQ(ours.stringForKey("stamp"), "1");
  EXPECT_EQ(ours.stringForKey("number"), std::nullopt) << "no string";
  EXPECT_EQ(test::readFile(path_),
            "{\n  \"none\": null,\n  \"number\": -1.5,\n"
            "  \"other\": \"2\",\n  \"stamp\": \"1\"\n}\n");
}

TEST_F(UserDefaultsTest, DamagedFilesCountAsEmptyAndAreKeptAside) {
  for (const std::string& damaged :
       {std::string("{\"stamp\": \"cut"), std::string("[1]"), std::string(),
        std::string(1000000, '['),
        "{\"a\": " + std::string(200000, '[') + std::string(200000, ']') + "}",
        "{\"stamp\": \"" + std::string(2 << 20, 'x') + "\"}"}) {
    test::writeFile(path_, damaged);
    JsonUserDefaults defaults(path_);
    EXPECT_EQ(defaults.stringForKey("stamp"), std::nullopt);
    EXPECT_EQ(platform_.log->lines().back(),
              "User defaults are damaged and were moved to " + path_ + ".damaged");
    EXPECT_EQ(test::readFile(path_ + ".damaged"), damaged);
    expectToWork(defaults);
  }
}

TEST_F(UserDefaultsTest, WhatIsNoFileIsNeitherWaitedForNorReadWithoutEnd) {
  std::filesystem::create_directories(std::filesystem::path(path_).parent_path());
  for (const auto& make : std::vector<std::function<void()>>{
           [this] { ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0); },
           [this] { std::filesystem::create_symlink("/dev/zero", path_); }}) {
    make();
    JsonUserDefaults defaults(path_);
    EXPECT_EQ(defaults.stringForKey("stamp"), std::nullopt);
    defaults.setString(std::string(1 << 20, 'x'), "stamp");
    EXPECT_FALSE(defaults.synchronize()) << "too large to be read again";
    expectToWork(defaults);
    std::filesystem::remove(path_);
  }
}

}  // namespace
}  // namespace lirvox::platform
