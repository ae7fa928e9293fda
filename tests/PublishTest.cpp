// Packed and published databases, as devices find them.
#include <cstdlib>
#include <string>
#include <vector>

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "catalog/CatalogError.h"
#include "catalog/Pack.h"
#include "catalog/Publish.h"
#include "lib/DatabaseInstallation.h"
#include "lib/ZipArchive/ZipArchive.h"
#include "tests/support/TestPlatform.h"

namespace lirvox::test {
namespace {

using catalog::CatalogError;
using catalog::Published;

class PublishTest : public testing::Test {
 protected:
  PublishTest() { makeDatabase("(1, 10, 100), (1, 20, 50), (2, 5, 100)"); }

  std::string path(const std::string& name) const { return platform_.folder.path(name); }

  void makeDatabase(const std::string& rows) {
    std::filesystem::remove(path("music.db"));
    SQLite::Database database(path("music.db"), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    database.exec("CREATE TABLE db(track_id, num1, num2); INSERT INTO db VALUES " + rows);
    database.exec("CREATE TABLE tracks(track_id INTEGER, title, artist, path, duration)");
    database.exec("INSERT INTO tracks VALUES (1, 'One', 'A', '/home/me/1.ogg', 60.5)");
    database.exec("CREATE TABLE sources(secret); INSERT INTO sources VALUES ('/home/me')");
  }
  Published publish(const std::string& url = "https://db.example.com:8080/sub/") const {
    return catalog::publish(path("music.db"), path("www"), {url, ""});
  }
  nlohmann::json reply() const {
    return nlohmann::json::parse(readFile(path("www/api/last_db_generation.php")));
  }

  TestPlatform platform_;
};

// All that a statement yields, column by column.
std::string query(const std::string& path, const std::string& statement) {
  const SQLite::Database database(path);
  SQLite::Statement rows(database, statement);
  std::string text;
  while (rows.executeStep()) {
    for (int column = 0; column < rows.getColumnCount(); ++column) {
      text += rows.getColumn(column).getString() + (column + 1 < rows.getColumnCount() ? "," : ";");
    }
  }
  return text;
}

TEST_F(PublishTest, APackedDatabaseInstallsWithWhatADeviceNeedsAndNothingElse) {
  catalog::pack(path("music.db"), path("music.zip"));
  ASSERT_TRUE(installLocalArchive(path("music.zip")));
  const std::string live = path("caches/lirvox/db1.sqlite");
  EXPECT_EQ(query(live, "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY 1"),
            "db;tracks;");
  EXPECT_EQ(query(live, "SELECT * FROM db ORDER BY num2, track_id"), "1,20,50;1,10,100;2,5,100;");
  EXPECT_EQ(query(live, "SELECT * FROM tracks"), "1,One,A,,60.5;");
  EXPECT_EQ(query(live, "PRAGMA integrity_check"), "ok;");
  EXPECT_EQ(readFile(live).find("/home/me"), std::string::npos);
}

TEST_F(PublishTest, AnyDatabaseWithTheTableCanBePacked) {
  SQLite::Database(path("bare.db"), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
      .exec("CREATE TABLE db(track_id, num1, num2); INSERT INTO db VALUES (7, 8, 9)");
  catalog::pack(path("bare.db"), path("bare.zip"));
  ASSERT_TRUE(installLocalArchive(path("bare.zip")));
  EXPECT_EQ(query(path("caches/lirvox/db1.sqlite"), "SELECT * FROM db"), "7,8,9;");
}

TEST_F(PublishTest, TheReplyNamesAnArchiveWithTheDatabaseWhereDevicesLook) {
  const Published published = publish();
  EXPECT_EQ(reply()["Result"], "OK");
  EXPECT_EQ(reply()["dt"], published.dt);
  EXPECT_EQ(reply()["url"], "https://db.example.com:8080/sub/archives/" + published.dt + ".zip");
  ASSERT_TRUE(ZipArchive::unzipFileAtPath(path("www/" + published.archive), path("out")));
  const Files out = contents(path("out"));
  EXPECT_EQ(out.count("lirvox/"), 1U);
  EXPECT_EQ(out.count("home/db.example.com/www/tmp/db1.sqlite"), 1U);
}

TEST_F(PublishTest, StampsFollowTheContentAndOlderArchivesStayUntilPruned) {
  const Published first = publish();
  EXPECT_TRUE(first.isNew);
  makeDatabase("(2, 5, 100), (1, 20, 50), (1, 10, 100)");
  EXPECT_FALSE(publish().isNew) << "the same rows in another order";
  EXPECT_NE(publish("https://other.example.com").dt, first.dt) << "another place in the archive";

  makeDatabase("(1, 10, 100)");
  const Published second = publish();
  EXPECT_TRUE(second.isNew);
  EXPECT_EQ(reply()["dt"], second.dt);
  EXPECT_TRUE(std::filesystem::exists(path("www/" + first.archive)));
  EXPECT_EQ(catalog::prune(path("www")), 2U);
  Files left = contents(path("www/archives"));
  EXPECT_EQ(left.size(), 1U);
  EXPECT_EQ(left.count(second.dt + ".zip"), 1U);
}

TEST_F(PublishTest, WhatFailsLeavesTheServiceAsItWas) {
  publish();
  const Files before = contents(path("www"));
  const auto options = catalog::PublishOptions{"https://db.example.com", ""};
  writeFile(path("text.db"), std::string(5000, 'x'));
  for (const char* const bad : {"missing.db", "text.db", "www"}) {
    EXPECT_THROW(catalog::publish(path(bad), path("www"), options), CatalogError) << bad;
    EXPECT_THROW(catalog::pack(path(bad), path("bad.zip")), CatalogError) << bad;
  }
  for (const auto& [url, folder] : std::vector<std::pair<std::string, std::string>>{
           {"no url", ""}, {"http://", ""}, {"http://host", "a/b"}, {"http://host", ".."}}) {
    EXPECT_THROW(catalog::publish(path("music.db"), path("www"), {url, folder}), CatalogError)
        << url << folder;
  }
  EXPECT_EQ(contents(path("www")), before);
  EXPECT_FALSE(std::filesystem::exists(path("missing.db")));
  EXPECT_FALSE(std::filesystem::exists(path("bad.zip")));
  EXPECT_THROW(catalog::prune(path("caches")), CatalogError);
}

}  // namespace
}  // namespace lirvox::test
