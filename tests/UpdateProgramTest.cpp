// Databases on their way from one lirvox program to another, through a real web server.
#include <regex>

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <unistd.h>

#include "tests/LoopbackServer.h"
#include "tests/ZipBytes.h"
#include "tests/support/FingerprintFile.h"
#include "tests/support/MusicTest.h"

namespace lirvox::test {
namespace {

struct UpdateProgramTest : MusicTest {
  UpdateProgramTest() {
    ::setenv("PATH", (std::string(std::getenv("PATH")) + ":/usr/sbin").c_str(), 1);
    ::setenv("no_proxy", "*", 1);
    ::setenv("LIRVOX_API_URL", url_.c_str(), 1);
    ::setenv("LIRVOX_SERVICE_HOST_FOLDER", "127.0.0.1", 1);
  }
  ~UpdateProgramTest() override {
    if (!nginx_) return;
    runCommand(nginxCommand_ + " -s stop");
    // What it still writes would keep the folder from being removed.
    for (int i = 0; i < 500 && std::filesystem::exists(path("pid")); ++i) ::usleep(10'000);
  }

  // nginx with the configuration that the documentation shows.
  void SetUp() override {
    if (runCommand("command -v nginx").status != 0) GTEST_SKIP() << "nginx is not installed";
    const std::string documentation = readFile(LIRVOX_SERVICE_DOCUMENTATION);
    const std::size_t begin = documentation.find("```nginx") + 8;
    std::string server = documentation.substr(begin, documentation.find("```", begin) - begin);
    server = std::regex_replace(server, std::regex("listen 80"),
                                "listen " + url_.substr(sizeof "http:/"));
    server = std::regex_replace(server, std::regex("/srv/lirvox"), path("www"));
    std::string http = "access_log access.log;\n";
    for (const char* const kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
      http += std::string(kind) + "_temp_path temporary;\n";
    }
    const std::string user = ::geteuid() == 0 ? "user root;\n" : "";
    writeFile(path("nginx.conf"), user + "pid pid;\nevents {}\nhttp {\n" + http + server + "}\n");
    const Finished started = runCommand(nginxCommand_);
    nginx_ = started.status == 0;
    ASSERT_TRUE(nginx_) << started.output;
  }

  void publish(const std::string& database) const {
    expect("publish -d " + database + " --url " + url_ + " www", 0, "new");
  }
  std::size_t archivesFetched() const {
    return std::stoul(runCommand("grep -c 'GET /archives/' '" + path("access.log") + "'").output);
  }

  // Of a port that a server has just left.
  const std::string url_ = LoopbackServer([](const std::string&, const Connection&) {}).url();
  const std::string nginxCommand_ = "nginx -p '" + path("") + "' -e error.log -c nginx.conf";
  bool nginx_ = false;
};

TEST_F(UpdateProgramTest, PublishedMusicArrivesOnceAndIsRecognised) {
  expectEach({{"update", 6, "last_db_generation.php: status 404"},
              {"index -d music.db music/tune1.wav", 0, ""}});
  publish("music.db");
  expectEach({{"update", 0, "installed: "},
              {"recognize --start 7.5 music/tune1.wav", 0, ": tune1 at 0:07"},
              {"recognize --start 7.5 music/tune2.wav", 1, "not recognized"},
              {"update --key abc", 0, "up to date: "}});
  EXPECT_EQ(archivesFetched(), 1U);
  expect("index -d music.db music/tune2.wav", 0, "");
  publish("music.db");
  expectEach({{"update", 0, "installed: "},
              {"recognize --start 7.5 music/tune1.wav", 0, ": tune1 at 0:07"},
              {"recognize --start 7.5 music/tune2.wav", 0, ": tune2 at 0:07"}});
  EXPECT_EQ(archivesFetched(), 2U);
}

TEST_F(UpdateProgramTest, SaysWhatFailedAndTriesAgain) {
  writeFingerprintFile(path("one.db"), {{7, 8, 9}});
  writeFingerprintFile(path("two.db"), {{1, 2, 3}});
  publish("one.db");
  expect("update", 0, "installed");
  publish("two.db");
  const std::string stamp =
      run("publish -d two.db --url " + url_ + " www").output.substr(sizeof "generation", 16);
  const std::string two = "www/archives/" + stamp + ".zip";
  std::filesystem::rename(path(two), path("two.zip"));
  expect("update", 6, ".zip: status 404");
  writeFile(path(two), "no archive");
  expect("update", 6, "failed to open zip file");
  std::filesystem::rename(path("two.zip"), path(two));
  ::setenv("LIRVOX_SERVICE_HOST_FOLDER", "other.example", 1);
  expect("update", 6, "holds no database of \"other.example\"");
  ::setenv("LIRVOX_SERVICE_HOST_FOLDER", "127.0.0.1", 1);
  expect("info", 0, "id's: 7\n");
  expect("update", 0, "installed");
  expect("info", 0, "id's: 1\n");

  writeFile(path("www/api/last_db_generation.php"), R"({"Result": "unknown key"})");
  expect("update", 6, "the service answers \"unknown key\"");
  writeFile(path("www/api/last_db_generation.php"), "[]");
  expect("update", 6, "names no database");
  ::setenv("LIRVOX_API_URL", "http://127.0.0.1:1", 1);
  expect("update", 6, "connect");
  const int folder = ::open(path("caches/lirvox").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ::flock(folder, LOCK_EX);
  expect("update", 6, "another update is running");
  ::close(folder);
  const LoopbackServer silent([](const std::string&, const Connection& c) { c.waitUntilClosed(); });
  ::setenv("LIRVOX_API_URL", silent.url().c_str(), 1);
  expect("update --timeout 0.5", 6, "no end within the time-out");
}

TEST_F(UpdateProgramTest, AnArchiveIsInstalledAndWhatWasIndexedThereIsKept) {
  expectEach({{"index music/tune1.wav", 0, ""},
              {"pack -o tune.zip", 0, "tune.zip: "},
              {"install none.zip", 6, "File does not exist"},
              {"install music/tune1.wav", 6, "Wrong file format"},
              {"index music/tune1.wav", 0, "1 unchanged"},
              {"install tune.zip", 0, "lirvox/indexed.sqlite"},
              {"index -d caches/lirvox/indexed.sqlite music/tune1.wav", 0, "1 unchanged"},
              {"recognize --start 7.5 music/tune1.wav", 0, ": tune1 at 0:07"},
              {"pack -d none.db -o none.zip", 4, "none.db"},
              {"publish --url ftp://a www", 2, "--url"}});
  // What an archive brings is no work of anybody's here, whatever it says, until it is changed.
  const std::string catalogue = readFile(path("caches/lirvox/indexed.sqlite"));
  writeFile(path("catalogue.zip"), zipBytes({{"db1.sqlite", catalogue}}));
  for (int i = 0; i < 2; ++i) expect("install catalogue.zip", 0, "installed");
  EXPECT_FALSE(std::filesystem::exists(path("caches/lirvox/indexed-2.sqlite")));
  expectEach({{"rename 1 --title New", 0, "New"},
              {"install catalogue.zip", 0, "lirvox/indexed-2.sqlite"}});
}

// The number of kills may be set in the environment.
TEST_F(UpdateProgramTest, KilledAtAnyMomentItLeavesAWholeDatabaseAndTheNextUpdateHeals) {
  const char* const wanted = std::getenv("LIRVOX_TEST_KILLS");
  const int kills = wanted ? std::atoi(wanted) : 10;
  const std::string live = path("caches/lirvox/db1.sqlite");
  const std::string reply = path("www/api/last_db_generation.php");
  std::pair<std::string, std::string> generations[2];  // reply and database
  double seconds = 0;
  std::mt19937 random(20260504);
  for (auto& [publishedReply, database] : generations) {
    std::vector<FingerprintRow> rows(20'000);
    for (auto& row : rows)
      row = {1, static_cast<int>(random() % 10'000), static_cast<int>(random() % (1U << 20U))};
    std::filesystem::remove(path("music.db"));
    writeFingerprintFile(path("music.db"), rows);
    publish("music.db");
    const auto start = std::chrono::steady_clock::now();
    expect("update", 0, "installed");
    seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    publishedReply = readFile(reply);
    database = readFile(live);
  }
  for (int round = 0, killed = 0; killed < kills; ++round) {
    SCOPED_TRACE(round);
    const auto& [currentReply, current] = generations[round % 2];
    writeFile(reply, currentReply);
    const double limit = seconds * static_cast<double>(1 + random() % 1000) / 1000;
    const std::string command = "timeout -s KILL " + std::to_string(limit) + " " LIRVOX_PROGRAM;
    killed += shell(command + " update").status == 128 + SIGKILL;
    // A whole database or none at all.
    const std::string found = readFile(live);
    ASSERT_EQ(found.empty(), !std::filesystem::exists(live));
    ASSERT_TRUE(found == generations[0].second || found == generations[1].second || found.empty());
    if (round % 3 != 0) continue;  // let some pile up
    expect("update", 0, "");
    ASSERT_TRUE(readFile(live) == current);
  }
  expect("update", 0, "");
  EXPECT_EQ(contents(path("caches")).size(), 2U) << "nothing is left but the folder and the file";
}

}  // namespace
}  // namespace lirvox::test
