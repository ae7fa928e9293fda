// User defaults: kept between runs, whole, and damage survived.
#include <gtest/gtest.h>

#include "lib/platform/linux/JsonUserDefaults.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TemporaryFolder.h"

namespace lirvox::test {
namespace {

using platform::JsonUserDefaults;

class UserDefaultsTest : public testing::Test {
 protected:
  const TemporaryFolder folder_;
  const std::string path_ = folder_.path("made/when/missing/defaults.json");
  const std::shared_ptr<RecordedLog> log_ = recordLog();
};

TEST_F(UserDefaultsTest, ValuesReachOtherProcessesOnceSynchronizedAndLeaveTheirsAlone) {
  JsonUserDefaults ours(path_);
  JsonUserDefaults theirs(path_);
  ours.setString("2026-05-04 \"x\"", "stamp");
  EXPECT_EQ(ours.stringForKey("stamp"), "2026-05-04 \"x\"");
  EXPECT_EQ(theirs.stringForKey("stamp"), std::nullopt);
  EXPECT_TRUE(ours.synchronize());
  EXPECT_EQ(theirs.stringForKey("stamp"), "2026-05-04 \"x\"");

  writeFile(path_, R"({"stamp": "1", "number": 7})");
  theirs.setString("2", "other");
  EXPECT_TRUE(theirs.synchronize());
  EXPECT_EQ(ours.stringForKey("stamp"), "1");
  EXPECT_EQ(ours.stringForKey("number"), std::nullopt) << "no string";
  EXPECT_NE(readFile(path_).find('7'), std::string::npos);
}

TEST_F(UserDefaultsTest, DamagedFilesCountAsEmptyAndAreKeptAside) {
  for (const std::string& damaged :
       {std::string("{\"stamp\": \"cut"), std::string("[1]"), std::string(),
        std::string(1000000, '['),
        "{\"a\": " + std::string(200000, '[') + std::string(200000, ']') + "}",
        "{\"stamp\": \"" + std::string(17 << 20, 'x') + "\"}"}) {
    writeFile(path_, damaged);
    JsonUserDefaults defaults(path_);
    EXPECT_EQ(defaults.stringForKey("stamp"), std::nullopt);
    EXPECT_EQ(log_->lines().back(),
              "User defaults are damaged and were moved to " + path_ + ".damaged");
    EXPECT_EQ(readFile(path_ + ".damaged"), damaged);
    defaults.setString("new", "stamp");
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(JsonUserDefaults(path_).stringForKey("stamp"), "new");
  }
}

TEST_F(UserDefaultsTest, AFailureToStoreIsReportedAndTheValueStays) {
  writeFile(folder_.path("made"), "a file where a folder should be");
  JsonUserDefaults defaults(path_);
  defaults.setString("new", "stamp");
  EXPECT_FALSE(defaults.synchronize());
  EXPECT_TRUE(log_->has("could not be stored"));
  EXPECT_EQ(defaults.stringForKey("stamp"), "new");
}

}  // namespace
}  // namespace lirvox::test
