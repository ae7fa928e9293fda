// User defaults: kept between runs, whole, and damage survived.
#include <gtest/gtest.h>

#include "lib/platform/UserDefaults.h"
#include "lib/platform/linux/JsonUserDefaults.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TemporaryFolder.h"

namespace lirvox::test {
namespace {

using platform::JsonUserDefaults;

TEST(UserDefaultsTest, ValuesReachOtherProcessesOnceSynchronized) {
  const TemporaryFolder folder;
  const std::string path = folder.path("made/when/missing/defaults.json");
  JsonUserDefaults ours(path);
  const JsonUserDefaults theirs(path);

  ours.setString("2026-05-04 \"x\"", "stamp");
  EXPECT_EQ(ours.stringForKey("stamp"), "2026-05-04 \"x\"");
  EXPECT_EQ(theirs.stringForKey("stamp"), std::nullopt);

  EXPECT_TRUE(ours.synchronize());
  EXPECT_EQ(theirs.stringForKey("stamp"), "2026-05-04 \"x\"");
}

TEST(UserDefaultsTest, WhatOthersStoredStaysWhenWeStore) {
  const TemporaryFolder folder;
  const std::string path = folder.path("defaults.json");
  writeFile(path, R"({"theirs": "1", "number": 7})");
  JsonUserDefaults defaults(path);
  defaults.setString("2", "ours");
  EXPECT_TRUE(defaults.synchronize());
  EXPECT_EQ(JsonUserDefaults(path).stringForKey("theirs"), "1");
  EXPECT_EQ(JsonUserDefaults(path).stringForKey("number"), std::nullopt) << "no string";
  EXPECT_NE(readFile(path).find('7'), std::string::npos);
}

TEST(UserDefaultsTest, DamagedFilesCountAsEmptyAndAreKeptAside) {
  for (const std::string& damaged : {std::string("{\"stamp\": \"cut"), std::string("[1]"),
                                     std::string(), std::string(1000000, '[')}) {
    const TemporaryFolder folder;
    const auto log = recordLog();
    const std::string path = folder.path("defaults.json");
    writeFile(path, damaged);
    JsonUserDefaults defaults(path);

    EXPECT_EQ(defaults.stringForKey("stamp"), std::nullopt);
    EXPECT_TRUE(log->has("User defaults are damaged"));
    EXPECT_EQ(readFile(path + ".damaged"), damaged);

    defaults.setString("new", "stamp");
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(JsonUserDefaults(path).stringForKey("stamp"), "new");
  }
}

TEST(UserDefaultsTest, AFailureToStoreIsReportedAndTheValueStays) {
  const TemporaryFolder folder;
  const auto log = recordLog();
  writeFile(folder.path("file"), "");
  JsonUserDefaults defaults(folder.path("file/defaults.json"));
  defaults.setString("new", "stamp");
  EXPECT_FALSE(defaults.synchronize());
  EXPECT_TRUE(log->has("could not be stored"));
  EXPECT_EQ(defaults.stringForKey("stamp"), "new");
}

}  // namespace
}  // namespace lirvox::test
