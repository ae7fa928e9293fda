// Updates of the database, step by step, with a session that does what the test says.
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "lib/DatabaseInstallation.h"
#include "lib/LirvoxWeb.h"
#include "lib/platform/Platform.h"
#include "tests/ZipBytes.h"
#include "tests/support/TestPlatform.h"

namespace lirvox::test {
namespace {

const std::string kInner = "home/service.example/www/tmp/db1.sqlite";

// Remembers the tasks and ends them when told to.
class ScriptedSession : public platform::HttpSession {
 public:
  void startDataTask(const std::string& url, DataCompletion completion) override {
    urls.push_back(url);
    data = std::move(completion);
  }
  void startDownloadTask(const std::string& url, DownloadCompletion completion) override {
    urls.push_back(url);
    stampAtDownload = LirvoxWeb::dtDbGenerated();
    download = std::move(completion);
  }

  std::vector<std::string> urls;
  DataCompletion data;
  DownloadCompletion download;
  std::optional<std::string> stampAtDownload;
};

class DatabaseUpdateTest : public testing::Test {
 protected:
  DatabaseUpdateTest() {
    ::setenv("LIRVOX_SERVICE_HOST_FOLDER", "service.example", 1);
    std::filesystem::create_directories(live().parent_path());
  }

  std::filesystem::path live() const { return caches() / "lirvox/db1.sqlite"; }

  std::filesystem::path caches() const { return platform_.folder.path("caches"); }

  void ask() {
    LirvoxWeb::downloadDatabaseIfNeeded(session_, "key&x=1",
                                        [this](bool good) { answers_.push_back(good); });
  }
  void reply(const std::string& body) { session_->data(body, {200}, std::nullopt); }
  void replyWithGeneration(const std::string& dt) {
    reply(R"({"Result": "OK", "dt": ")" + dt + R"(", "url": "http://archive/x.zip"})");
  }
  void deliver(const std::string& archive) {
    const std::string location = platform_.folder.path("downloaded");
    writeFile(location, archive);
    session_->download(location, {200}, std::nullopt);
  }
  bool downloads() const { return session_->urls.size() == 2; }

  TestPlatform platform_;
  std::shared_ptr<ScriptedSession> session_ = std::make_shared<ScriptedSession>();
  std::vector<bool> answers_;
};

TEST_F(DatabaseUpdateTest, TheFirstRunDownloadsAndInstalls) {
  ask();
  EXPECT_EQ(session_->urls.at(0), "http://localhost/api/last_db_generation.php?api_key=key&x=1");
  replyWithGeneration("g1");
  ASSERT_TRUE(downloads());
  EXPECT_EQ(session_->urls.at(1), "http://archive/x.zip");
  EXPECT_EQ(session_->stampAtDownload, std::nullopt) << "stored after the start ...";
  EXPECT_EQ(LirvoxWeb::dtDbGenerated(), "g1") << "... and before the end";
  EXPECT_TRUE(answers_.empty());

  deliver(zipBytes({{kInner, "database"}}));
  EXPECT_EQ(answers_, std::vector<bool>{true});
  EXPECT_EQ(contents(caches()), (Files{{"lirvox/", ""}, {"lirvox/db1.sqlite", "database"}}));
}

TEST_F(DatabaseUpdateTest, OnlyTheStoredStampWithAFileIsUpToDate) {
  const struct {
    const char* stored;
    bool file;
    bool upToDate;
  } cases[] = {
      {"g1", true, true}, {"g1", false, false}, {"g0", true, false}, {nullptr, true, false}};
  for (const auto& test : cases) {
    SCOPED_TRACE(std::string(test.stored ? test.stored : "none") + (test.file ? " file" : ""));
    TestPlatform fresh;
    session_ = std::make_shared<ScriptedSession>();
    answers_.clear();
    if (test.stored) LirvoxWeb::setDtDbGenerated(test.stored);
    if (test.file) writeFile(fresh.folder.path("caches/lirvox/db1.sqlite"), "old");
    ask();
    replyWithGeneration("g1");
    EXPECT_EQ(answers_, test.upToDate ? std::vector<bool>{true} : std::vector<bool>{});
    EXPECT_EQ(downloads(), !test.upToDate);
  }
}

TEST_F(DatabaseUpdateTest, AFailedDownloadIsNotRepeatedWhileAnOldFileExists) {
  writeFile(live(), "old");
  ask();
  replyWithGeneration("g2");
  session_->download("", {0}, LirvoxError{"", 1, ""});
  EXPECT_TRUE(answers_.empty());
  session_->urls.clear();
  ask();
  replyWithGeneration("g2");
  EXPECT_EQ(answers_, std::vector<bool>{true});
  EXPECT_EQ(readFile(live()), "old");
}

TEST_F(DatabaseUpdateTest, BadRepliesEndQuietlyAndStoreNothing) {
  const std::string million(1000000, 'x');
  for (const std::string& body : std::vector<std::string>{
           "", "<html>", "null", "7", "\"OK\"", "[]", "{}", std::string(1000000, '['),
           R"({"Result": "OK"})", R"({"Result": "no", "dt": "g", "url": "http://a/"})",
           R"({"Result": 1, "dt": "g", "url": "http://a/"})", R"({"dt": "g", "url": "http://a/"})",
           R"({"Result": "OK", "dt": 5, "url": "http://a/"})",
           R"({"Result": "OK", "dt": ["g"], "url": "http://a/"})",
           R"({"Result": "OK", "dt": null, "url": "http://a/"})", R"({"Result": "OK", "dt": "g"})",
           R"({"Result": "OK", "dt": "g", "url": {}})",
           R"({"Result": "OK", "dt": ")" + million + R"(", "url": "http://a/"})"}) {
    SCOPED_TRACE(body.substr(0, 60));
    session_ = std::make_shared<ScriptedSession>();
    ask();
    reply(body);
    EXPECT_FALSE(downloads());
  }
  session_ = std::make_shared<ScriptedSession>();
  ask();
  session_->data(R"({"Result": "OK", "dt": "g", "url": "http://a/"})", {0}, LirvoxError{"", 1, ""});
  EXPECT_FALSE(downloads()) << "a transport error counts, whatever came before it";
  EXPECT_TRUE(answers_.empty());
  EXPECT_EQ(LirvoxWeb::dtDbGenerated(), std::nullopt);
  EXPECT_TRUE(platform_.log->lines().empty());
}

TEST_F(DatabaseUpdateTest, WhatAFailedInstallationLeavesBehind) {
  const std::string archive = zipBytes({{kInner, "new"}});
  const std::string elsewhere = zipBytes({{"elsewhere/db1.sqlite", "new"}});
  const Files old = {{"lirvox/", ""}, {"lirvox/db1.sqlite", "old"}};
  const auto with = [](Files files, const Files& more) {
    files.insert(more.begin(), more.end());
    return files;
  };
  // Not an archive; then an archive without the database: all stays for inspection.
  for (const auto& [bytes, left] : std::vector<std::pair<std::string, Files>>{
           {"<html>404", {{"tmp.zip", "<html>404"}}},
           {archive.substr(0, 60), {{"tmp.zip", archive.substr(0, 60)}}},
           {elsewhere,
            {{"tmp.zip", elsewhere}, {"elsewhere/", ""}, {"elsewhere/db1.sqlite", "new"}}}}) {
    TestPlatform fresh;
    writeFile(fresh.folder.path("caches/lirvox/db1.sqlite"), "old");
    LirvoxWeb::downloadAndUnzipDB(session_, "", "", [this](bool g) { answers_.push_back(g); });
    deliver(bytes);
    EXPECT_EQ(contents(fresh.folder.path("caches")), with(old, left));
  }
  // No folder for the live database: it is not made, and what was unpacked goes.
  TestPlatform fresh;
  LirvoxWeb::downloadAndUnzipDB(session_, "", "", [this](bool g) { answers_.push_back(g); });
  std::filesystem::create_directories(fresh.folder.path("caches"));
  deliver(archive);
  EXPECT_EQ(contents(fresh.folder.path("caches")), Files{});
  EXPECT_TRUE(answers_.empty());
}

TEST_F(DatabaseUpdateTest, AnArchiveMayBringTheFolderOfTheLiveDatabaseAlong) {
  ASSERT_TRUE(std::filesystem::remove(live().parent_path()));
  LirvoxWeb::downloadAndUnzipDB(session_, "", "", [this](bool g) { answers_.push_back(g); });
  deliver(zipBytes({{"lirvox/", ""}, {kInner, "database"}}));
  EXPECT_EQ(answers_, std::vector<bool>{true});
  EXPECT_EQ(readFile(live()), "database");
}

TEST_F(DatabaseUpdateTest, ADatabaseThatDoesNotOpenIsAnsweredWithNo) {
  // An extension that refuses to load makes every opening fail.
  using Entry = void (*)();
  static const auto refuse = +[](sqlite3*, char**, const void*) { return SQLITE_ERROR; };
  sqlite3_auto_extension(reinterpret_cast<Entry>(refuse));
  LirvoxWeb::downloadAndUnzipDB(session_, "", "", [this](bool g) { answers_.push_back(g); });
  deliver(zipBytes({{kInner, "database"}}));
  sqlite3_reset_auto_extension();
  EXPECT_EQ(answers_, std::vector<bool>{false});
  EXPECT_TRUE(platform_.log->has("Failed to open database!"));
  EXPECT_EQ(contents(caches()), (Files{{"lirvox/", ""}, {"lirvox/db1.sqlite", "database"}}));
}

TEST_F(DatabaseUpdateTest, LocalArchivesHoldTheDatabaseAtTheirTop) {
  const std::string path = platform_.folder.path("local.zip");
  EXPECT_FALSE(installLocalArchive(path));
  EXPECT_EQ(platform_.log->lines().back(), "Lirvox: File does not exist");

  std::filesystem::remove_all(caches());
  for (const std::string& bad : {std::string("no archive"), zipBytes({{"in/db1.sqlite", "x"}})}) {
    writeFile(path, bad);
    EXPECT_FALSE(installLocalArchive(path));
    EXPECT_EQ(platform_.log->lines().back(), "Lirvox: Wrong file format!");
  }
  writeFile(path, zipBytes({{"db1.sqlite", "x"}}));
  EXPECT_TRUE(installLocalArchive(path));
  EXPECT_EQ(readFile(live()), "x");
  EXPECT_TRUE(std::filesystem::exists(path));

  writeFile(path, zipBytes({{.name = "db1.sqlite", .data = "y", .crc = 1}}));
  EXPECT_FALSE(installLocalArchive(path));
  EXPECT_EQ(readFile(live()), "x") << "a damaged archive does not touch the live database";
}

TEST_F(DatabaseUpdateTest, ASessionThatIsGoneEndsTheUpdate) {
  ask();
  const auto data = session_->data;
  session_.reset();
  data(R"({"Result": "OK", "dt": "g", "url": "http://a/"})", {200}, std::nullopt);
  EXPECT_TRUE(answers_.empty());
  EXPECT_EQ(LirvoxWeb::dtDbGenerated(), std::nullopt);
}

}  // namespace
}  // namespace lirvox::test
