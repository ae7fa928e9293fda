// Updates of the database through the recognizer, from a service that behaves or does not.
#include <sqlite3.h>

#include "lib/Lirvox.h"
#include "lib/platform/linux/CurlHttpSession.h"
#include "tests/LoopbackServer.h"
#include "tests/support/FingerprintFile.h"
#include "tests/support/LocalService.h"
#include "tests/support/TestPlatform.h"
#include "tools/UpdateWatch.h"

namespace lirvox::test {
namespace {

using platform::HttpSessionConfiguration;
using std::chrono::milliseconds;
using Answers = std::vector<bool>;
using Manner = std::function<void(const Connection&)>;

Manner serve(int status, const std::string& body, const std::string& headers = "") {
  return [=](const Connection& connection) { connection.reply(status, body, headers); };
}
Manner send(const std::string& bytes) {
  return [=](const Connection& connection) { connection.send(bytes); };
}

struct UpdateTest : testing::Test {
  UpdateTest() {
    ::setenv("LIRVOX_SERVICE_HOST_FOLDER", "service.example", 1);
    ::setenv("LIRVOX_API_URL", server_.url().c_str(), 1);
    ::setenv("no_proxy", "*", 1);
    writeFile(live(), "old");
  }
  ~UpdateTest() override {
    lirvox_->setDatabase(nullptr);
    lirvox_->setUserApiKey("");
  }

  std::filesystem::path caches() const { return platform_.folder.path("caches"); }
  std::filesystem::path live() const { return caches() / "lirvox/db1.sqlite"; }

  // What the service does from now on: one generation and its archive.
  void publish(const std::string& dt, const Manner& archive) {
    const std::string url = server_.url("/archive");
    publish(serve(200, R"({"Result": "OK", "dt": ")" + dt + R"(", "url": ")" + url + R"("})"),
            archive);
  }
  void publish(const Manner& reply, const Manner& archive) {
    server_.setHandler([=](const std::string& target, const Connection& connection) {
      (target == "/archive" ? archive : reply)(connection);
    });
  }
  void publish(const std::string& dt, const std::string& database) {
    publish(dt, serve(200, archiveOf(database)));
  }

  // Runs one update to its end, answered or not.
  Answers update() {
    Answers answers;
    const auto watch = std::make_shared<tools::UpdateWatch>();
    platform_.change([&](platform::Platform& services) {
      services.log = platform_.log;
      services.makeHttpSession = [this](HttpSessionConfiguration configuration) {
        configuration.timeoutForRequest = timeout_;
        configuration.timeoutForResource = 2 * timeout_;
        return std::make_shared<platform::CurlHttpSession>(configuration, queue_, caches());
      };
      watch->attachTo(services);
    });
    lirvox_->setUserApiKey("key&x=1");
    lirvox_->downloadDatabaseIfNeeded([&](bool good) {
      answers.push_back(good);
      watch->answer(good);
    });
    outcome_ = watch->wait(std::chrono::seconds(20));
    lirvox_->setSession(nullptr);
    drain(*queue_);
    return answers;
  }
  bool installs(const std::string& archive) {
    writeFile(platform_.folder.path("local.zip"), archive);
    return lirvox_->updateDatabasePath(platform_.folder.path("local.zip"));
  }

  static Files holding(const std::string& database) {
    return {{"lirvox/", ""}, {"lirvox/db1.sqlite", database}};
  }

  const std::shared_ptr<platform::TaskQueue> queue_ =
      platform::systemPlatform().makeSerialQueue("test");
  TestPlatform platform_;
  const std::shared_ptr<Lirvox> lirvox_ = Lirvox::sharedInstance();
  tools::UpdateOutcome outcome_;
  milliseconds timeout_{20'000};
  LoopbackServer server_{nullptr};
};

TEST_F(UpdateTest, DownloadsUnlessTheStampIsTheStoredOneAndTheFileIsThere) {
  // Without a database the download fails.
  const std::tuple<const char*, const char*, const char*, bool, std::size_t, const char*> steps[] =
      {
          {"first", "g1", "one", true, 2, "one"},
          {"up to date", "g1", "", false, 1, "one"},
          {"file gone", "g1", "uno", true, 2, "uno"},
          {"new generation", "g2", "two", false, 2, "two"},
          {"failed", "g3", nullptr, false, 2, "two"},
          {"not tried again while an old file is there, as is meant", "g3", "", false, 1, "two"},
      };
  for (const auto& [what, dt, database, removesFile, requests, left] : steps) {
    SCOPED_TRACE(what);
    if (removesFile) std::filesystem::remove(live());
    database ? publish(dt, database) : publish(dt, send(""));
    const std::size_t before = server_.requests().size();
    EXPECT_EQ(update(), database ? Answers{true} : Answers{});
    EXPECT_EQ(server_.requests().size() - before, requests);
    EXPECT_EQ(contents(caches()), holding(left));
    EXPECT_EQ(lirvox_->dtDbGenerated(), dt);
  }
  EXPECT_EQ(server_.requests().at(0).rfind("GET /api/last_db_generation.php?api_key=key&x=1 ", 0),
            0U);
  EXPECT_EQ(lirvox_->database(), nullptr) << "a network update leaves it alone";
}

TEST_F(UpdateTest, BadRepliesEndQuietlyAndStoreNothing) {
  const auto with = [](const std::string& members) { return "{" + members + "}"; };
  const std::string result = R"("Result": "OK", )";
  const std::string url = R"("url": "http://127.0.0.1:1/")";
  for (const std::string& body : std::vector<std::string>{
           "", "<html>", "null", "7", "\"OK\"", "[]", "{}", std::string(1000000, '['),
           with(R"("Result": "OK")"), with(R"("Result": "no", "dt": "g", )" + url),
           with(R"("Result": 1, "dt": "g", )" + url), with(R"("dt": "g", )" + url),
           with(result + R"("dt": 5, )" + url), with(result + R"("dt": ["g"], )" + url),
           with(result + R"("dt": null, )" + url), with(result + R"("dt": "g")"),
           with(result + R"("dt": "g", "url": {})"),
           with(result + R"("dt": ")" + std::string(1000000, 'x') + R"(", )" + url)}) {
    SCOPED_TRACE(body.substr(0, 60));
    publish(serve(200, body), serve(200, ""));
    EXPECT_EQ(update(), Answers{});
    EXPECT_FALSE(outcome_.downloaded);
    EXPECT_EQ(outcome_.notes.size(), 1U) << "what the watch says itself";
  }
  EXPECT_EQ(lirvox_->dtDbGenerated(), std::nullopt);
  EXPECT_EQ(contents(caches()), holding("old"));
}

TEST_F(UpdateTest, MisbehavingServersChangeNothingButWhatIsKeptForInspection) {
  const std::string cutArchive = archiveOf("new").substr(0, 60);
  const std::string elsewhere = zipBytes({{"elsewhere/db1.sqlite", "new"}});
  const Manner endless = [megabyte = std::string(1 << 20, 'x')](const Connection& connection) {
    connection.send("HTTP/1.1 200 OK\r\n\r\n");
    while (connection.send(megabyte)) continue;
  };
  const Manner stall = [](const Connection& connection) {
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 999\r\n\r\n{\"Result");
    connection.waitUntilClosed();
  };
  const struct {
    const char* what;
    Manner manner;
    Files left;  // in the caches directory, when the archive is served like this
    bool hangs = false;
  } cases[] = {
      {"no answer", [](const Connection& connection) { connection.waitUntilClosed(); }, {}, true},
      {"no HTTP", send("\1\2\3\4 nothing of the kind\r\n\r\n"), {}},
      {"cut short", send("HTTP/1.1 200 OK\r\nContent-Length: 999\r\n\r\n{\"Result"), {}},
      {"stalled", stall, {}, true},
      {"endless body", endless, {}, true},
      {"length too small",
       send("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nPK\3\4{}}}}}"),
       {{"tmp.zip", "PK\3\4{"}}},
      {"404", serve(404, "<html>"), {{"tmp.zip", "<html>"}}},
      {"500", serve(500, ""), {{"tmp.zip", ""}}},
      {"redirect loop", serve(302, "", "Location: /archive\r\n"), {}},
      {"no archive", serve(200, "text"), {{"tmp.zip", "text"}}},
      {"cut archive", serve(200, cutArchive), {{"tmp.zip", cutArchive}}},
      {"database elsewhere",
       serve(200, elsewhere),
       {{"tmp.zip", elsewhere}, {"elsewhere/", ""}, {"elsewhere/db1.sqlite", "new"}}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    writeFile(live(), "old");
    const auto stamp = lirvox_->dtDbGenerated();
    if (test.hangs) timeout_ = milliseconds(400);
    publish(test.manner, test.manner);
    EXPECT_EQ(update(), Answers{});
    EXPECT_EQ(contents(caches()), holding("old"));
    EXPECT_EQ(lirvox_->dtDbGenerated(), stamp);

    publish(std::string("of ") + test.what, test.manner);
    EXPECT_EQ(update(), Answers{});
    Files left = holding("old");
    left.insert(test.left.begin(), test.left.end());
    EXPECT_EQ(contents(caches()), left);
    EXPECT_EQ(lirvox_->dtDbGenerated(), std::string("of ") + test.what);

    std::filesystem::remove_all(caches() / "elsewhere");
    timeout_ = milliseconds(20'000);
    publish(std::string("after ") + test.what, "new");
    EXPECT_EQ(update(), Answers{true});
    EXPECT_EQ(contents(caches()), holding("new"));
  }
}

TEST_F(UpdateTest, TheFolderOfTheLiveDatabaseIsNotMadeButAnArchiveMayBringIt) {
  std::filesystem::remove_all(caches());
  publish("g1", "new");
  EXPECT_EQ(update(), Answers{});
  EXPECT_EQ(contents(caches()), Files{}) << "what was unpacked goes";
  publish("g1", serve(200, zipBytes({{"lirvox/", ""}, {kInner, "new"}})));
  EXPECT_EQ(update(), Answers{true});
  EXPECT_EQ(readFile(live()), "new");
}

TEST_F(UpdateTest, ADatabaseThatDoesNotOpenIsAnsweredWithNo) {
  // An extension that refuses to load makes every opening fail.
  static const auto refuse = +[](sqlite3*, char**, const void*) { return SQLITE_ERROR; };
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(refuse));
  publish("g1", "new");
  EXPECT_EQ(update(), Answers{false});
  sqlite3_reset_auto_extension();
  EXPECT_EQ(outcome_.notes, std::vector<std::string>{"Failed to open database!"});
  EXPECT_EQ(contents(caches()), holding("new"));
}

TEST_F(UpdateTest, LocalArchivesHoldTheDatabaseAtTheirTop) {
  EXPECT_FALSE(lirvox_->updateDatabasePath(platform_.folder.path("none.zip")));
  EXPECT_EQ(platform_.log->lines().back(), "Lirvox: File does not exist");

  std::filesystem::remove_all(caches());
  for (const std::string& bad : {std::string("no archive"), zipBytes({{"in/db1.sqlite", "x"}})}) {
    EXPECT_FALSE(installs(bad));
    EXPECT_EQ(platform_.log->lines().back(), "Lirvox: Wrong file format!");
  }
  EXPECT_EQ(lirvox_->database(), nullptr);
  EXPECT_TRUE(installs(zipBytes({{"db1.sqlite", "x"}})));
  EXPECT_EQ(readFile(live()), "x");
  EXPECT_NE(lirvox_->database(), nullptr);
  EXPECT_TRUE(std::filesystem::exists(platform_.folder.path("local.zip")));

  EXPECT_FALSE(installs(zipBytes({{.name = "db1.sqlite", .data = "y", .crc = 1}})));
  EXPECT_EQ(readFile(live()), "x") << "a damaged archive does not touch the live database";
}

TEST_F(UpdateTest, ASessionThatIsGoneEndsTheUpdate) {
  const auto queue = platform_.scheduler.queue();
  auto session = std::make_shared<LocalService>(queue, platform_.folder.path("download"));
  session->publish("g", "archive");
  lirvox_->setSession(std::move(session));
  lirvox_->downloadDatabaseIfNeeded([](bool) { ADD_FAILURE(); });
  lirvox_->setSession(nullptr);
  platform_.scheduler.run();  // the answer comes too late
  EXPECT_EQ(lirvox_->dtDbGenerated(), std::nullopt);
}

TEST_F(UpdateTest, NothingThatAnArchiveBringsKeepsTheNextOneOut) {
  writeFingerprintFile(platform_.folder.path("good"), {{1, 2, 3}});
  const std::string good = readFile(platform_.folder.path("good"));
  const auto expectRows = [&](bool network) {
    if (network) publish("good", serve(200, zipBytes({{"lirvox/"}, {kInner, good}})));
    EXPECT_TRUE(network ? update() == Answers{true} : installs(zipBytes({{"db1.sqlite", good}})));
    const auto rows = LirvoxDatabase(live()).selectFingerprints({{0, 3}});
    EXPECT_TRUE(rows && rows->rowCount() == 1);
  };
  for (const std::string name :
       {"lirvox/db1.sqlite-wal/x", "lirvox/db1.sqlite-journal/x", "lirvox/db1.sqlite/x", "home",
        "home/service.example", "lirvox", "tmp.zip/x"}) {
    for (const bool network : {true, false}) {
      SCOPED_TRACE(name);
      std::filesystem::remove_all(caches());
      publish("bad", serve(200, zipBytes({{"tmp.zip", zipBytes({{"a"}})}, {name}})));
      update();
      installs(zipBytes({{name.substr(name.find('/') + 1)}}));
      expectRows(network);
      // As an archive has left it that was installed before such names were refused.
      std::filesystem::remove_all(caches());
      writeFile(caches() / name, "");
      expectRows(network);
    }
  }
}

}  // namespace
}  // namespace lirvox::test
