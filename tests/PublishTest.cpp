// Packed and published databases, as devices find them.
#include <SQLiteCpp/SQLiteCpp.h>
#include <nlohmann/json.hpp>

#include "catalog/CatalogError.h"
#include "catalog/Pack.h"
#include "catalog/Publish.h"
#include "lib/ZipArchive/ZipArchive.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Test.h"

namespace lirvox::test {
namespace {

using catalog::CatalogError;
using catalog::Published;

struct PublishTest : testing::Test {
  PublishTest() { makeDatabase("(1, 10, 100), (1, 20, 50), (2, 5, 100)"); }

  std::string path(const std::string& name) const { return folder_.path(name); }
  void makeDatabase(const std::string& rows) const {
    std::filesystem::remove(path("music.db"));
    SQLite::Database database(path("music.db"), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    database.exec("CREATE TABLE db(track_id, num1, num2); INSERT INTO db VALUES " + rows +
                  "; CREATE TABLE tracks(track_id INTEGER, title, artist, path, duration);"
                  "INSERT INTO tracks VALUES (1, 'One', 'A', '/home/me/1.ogg', 60.5);"
                  "CREATE TABLE sources(secret); INSERT INTO sources VALUES ('/home/me')");
  }
  Published publish(const std::string& url = "https://db.example.com:8080/sub/") const {
    return catalog::publish(path("music.db"), path("www"), {url, ""});
  }
  nlohmann::json reply() const {
    return nlohmann::json::parse(readFile(path("www/api/last_db_generation.php")));
  }
  std::size_t unpack(const std::string& archive) const {
    EXPECT_TRUE(ZipArchive::unzipFileAtPath(path(archive), path("out")));
    return contents(path("out")).size();
  }
  // All that a statement yields from a database.
  std::string query(const std::string& name, const std::string& statement) const {
    const SQLite::Database database(path(name));
    SQLite::Statement rows(database, statement);
    std::string text;
    while (rows.executeStep()) {
      for (int i = 0; i < rows.getColumnCount(); ++i) text += rows.getColumn(i).getString() + ",";
    }
    return text;
  }

  const TemporaryFolder folder_;
};

TEST_F(PublishTest, APackedDatabaseHoldsWhatADeviceNeedsAndNothingElse) {
  catalog::pack(path("music.db"), path("music.zip"));
  EXPECT_EQ(unpack("music.zip"), 1U);
  const std::string file = "out/db1.sqlite";
  EXPECT_EQ(query(file, "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY 1"),
            "db,tracks,");
  EXPECT_EQ(query(file, "SELECT * FROM db ORDER BY num2, track_id"), "1,20,50,1,10,100,2,5,100,");
  EXPECT_EQ(query(file, "SELECT * FROM tracks"), "1,One,A,,60.5,");
  EXPECT_EQ(query(file, "PRAGMA integrity_check"), "ok,");
  EXPECT_EQ(readFile(path(file)).find("/home/me"), std::string::npos);

  SQLite::Database(path("music.db"), SQLite::OPEN_READWRITE).exec("DROP TABLE tracks");
  catalog::pack(path("music.db"), path("music.zip"));
  EXPECT_EQ(unpack("music.zip"), 1U) << "the table db is enough";
}

TEST_F(PublishTest, StampsFollowTheContentAndOlderArchivesStayUntilPruned) {
  const Published first = publish();
  EXPECT_TRUE(first.isNew);
  EXPECT_EQ(reply()["url"], "https://db.example.com:8080/sub/archives/" + first.dt + ".zip");
  unpack("www/" + first.archive);
  EXPECT_TRUE(std::filesystem::exists(path("out/home/db.example.com/www/tmp/db1.sqlite")));
  EXPECT_TRUE(std::filesystem::exists(path("out/lirvox")));
  makeDatabase("(2, 5, 100), (1, 20, 50), (1, 10, 100)");
  EXPECT_FALSE(publish().isNew) << "the same rows in another order";
  EXPECT_NE(publish("https://other.example.com").dt, first.dt) << "another place in the archive";

  makeDatabase("(1, 10, 100)");
  const Published second = publish();
  EXPECT_TRUE(second.isNew);
  EXPECT_EQ(reply()["dt"], second.dt);
  EXPECT_TRUE(std::filesystem::exists(path("www/" + first.archive)));
  EXPECT_EQ(catalog::prune(path("www")), 2U);
  const Files left = contents(path("www/archives"));
  EXPECT_EQ(left.size(), 1U);
  EXPECT_EQ(left.count(second.dt + ".zip"), 1U);
}

TEST_F(PublishTest, WhatFailsLeavesTheServiceAsItWas) {
  publish();
  const Files before = contents(path("www"));
  writeFile(path("text.db"), std::string(5000, 'x'));
  for (const char* const bad : {"missing.db", "text.db", "www"}) {
    EXPECT_THROW(catalog::publish(path(bad), path("www"), {"http://host", ""}), CatalogError);
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
  EXPECT_THROW(catalog::prune(path("elsewhere")), CatalogError);
}

}  // namespace
}  // namespace lirvox::test
