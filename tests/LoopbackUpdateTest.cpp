// Whole updates over a loopback network: with a server that misbehaves, on a full disk,
// and killed at any moment.
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mount.h>
#include <sys/wait.h>

#include "lib/LirvoxWeb.h"
#include "lib/platform/Platform.h"
#include "lib/platform/linux/CurlHttpSession.h"
#include "tests/LoopbackServer.h"
#include "tests/ZipBytes.h"
#include "tests/support/TestPlatform.h"

namespace lirvox::test {
namespace {

using std::chrono::milliseconds;
using Answers = std::vector<bool>;

constexpr milliseconds kLong{20000};
const std::string kInner = "home/service.example/www/tmp/db1.sqlite";

// What no compression makes small.
std::string noise(std::size_t bytes, unsigned seed) {
  std::mt19937 random(seed);
  std::string text(bytes, '\0');
  for (char& c : text) c = static_cast<char>(random());
  return text;
}

std::string ok(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) +
         "\r\n\r\n" + body;
}

// Serves one generation and its archive, each in the manner that the test sets.
class Service {
 public:
  using Manner = std::function<void(const Connection&)>;

  Service()
      : server_([this](const std::string& target, const Connection& connection) {
          const Manner manner = target.rfind("/api/", 0) == 0 ? get(reply) : get(archive);
          manner(connection);
        }) {
    ::setenv("LIRVOX_API_URL", server_.url().c_str(), 1);
  }

  void publish(const std::string& dt, const std::string& database) {
    const std::string body = R"({"Result": "OK", "dt": ")" + dt + R"(", "url": ")" +
                             server_.url("/archive.zip") + R"("})";
    const std::string bytes = zipBytes({{kInner, database}});
    const std::lock_guard lock(mutex_);
    reply = [body](const Connection& connection) { connection.send(ok(body)); };
    archive = [bytes](const Connection& connection) { connection.send(ok(bytes)); };
  }
  void set(Manner Service::*which, Manner manner) {
    const std::lock_guard lock(mutex_);
    this->*which = std::move(manner);
  }

  Manner reply;
  Manner archive;

 private:
  Manner get(const Manner& manner) {
    const std::lock_guard lock(mutex_);
    return manner;
  }

  std::mutex mutex_;  // guards the manners
  LoopbackServer server_;
};

class LoopbackUpdateTest : public testing::Test {
 protected:
  LoopbackUpdateTest() {
    ::setenv("LIRVOX_SERVICE_HOST_FOLDER", "service.example", 1);
    ::setenv("no_proxy", "*", 1);
    // Of the process that runs an update.
    ::setenv("LIRVOX_CACHES_DIR", caches().c_str(), 1);
    ::setenv("LIRVOX_CONFIG_DIR", platform_.folder.path("config").c_str(), 1);
  }

  std::filesystem::path caches() const { return platform_.folder.path("caches"); }
  std::filesystem::path live() const { return caches() / "lirvox/db1.sqlite"; }

  // Runs one update to its end, answered or not.
  Answers update() {
    Answers answers;
    Event ended;
    platform::HttpSessionConfiguration configuration = LirvoxWeb::sessionConfiguration();
    configuration.timeoutForRequest = milliseconds(400);
    configuration.timeoutForResource = milliseconds(1000);
    configuration.observer = [&](const platform::HttpTaskReport& report) {
      const bool asked = report.url.find("/api/") != std::string::npos;
      if (report.ended && (!asked || report.error || !expectDownload_)) ended.set();
    };
    const auto queue = platform::systemPlatform().makeSerialQueue("test");
    std::shared_ptr<platform::HttpSession> session =
        std::make_shared<platform::CurlHttpSession>(configuration, queue, caches());
    LirvoxWeb::downloadDatabaseIfNeeded(session, "key",
                                        [&](bool good) { answers.push_back(good); });
    EXPECT_TRUE(ended.waitFor(kLong));
    session.reset();  // its completions wait in the queue now
    Event flushed;
    queue->async([&] { flushed.set(); });
    EXPECT_TRUE(flushed.waitFor(kLong));
    return answers;
  }

  TestPlatform platform_;
  Service service_;
  bool expectDownload_ = true;
};

const auto kMisbehaviours = [] {
  const std::string megabyte(1 << 20, 'x');
  const auto endless = [megabyte](const Connection& connection) {
    connection.send("HTTP/1.1 200 OK\r\n\r\n");
    while (connection.send(megabyte)) {
    }
  };
  return std::vector<std::pair<const char*, Service::Manner>>{
      {"no answer", [](const Connection& connection) { connection.waitUntilClosed(); }},
      {"cut short",
       [](const Connection& connection) {
         connection.send("HTTP/1.1 200 OK\r\nContent-Length: 999\r\n\r\n{\"Result");
       }},
      {"endless body", endless},
      {"length too small",
       [](const Connection& connection) {
         connection.send("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nPK\3\4{}}}}}}}");
       }},
      {"404", [](const Connection& connection) { connection.reply(404, "<html>"); }},
      {"500", [](const Connection& connection) { connection.reply(500, ""); }},
      {"redirect loop",
       [](const Connection& connection) { connection.reply(302, "", "Location: /api/\r\n"); }},
      {"no archive and no JSON", [](const Connection& connection) { connection.send(ok("text")); }},
  };
}();

TEST_F(LoopbackUpdateTest, AMisbehavingServiceChangesNothing) {
  expectDownload_ = false;
  for (const auto& [what, manner] : kMisbehaviours) {
    SCOPED_TRACE(what);
    writeFile(live(), "old");
    service_.publish("g", "new");
    service_.set(&Service::reply, manner);
    EXPECT_EQ(update(), Answers{});
    EXPECT_EQ(contents(caches()), (Files{{"lirvox/", ""}, {"lirvox/db1.sqlite", "old"}}));
    EXPECT_EQ(LirvoxWeb::dtDbGenerated(), std::nullopt);
  }
}

TEST_F(LoopbackUpdateTest, AMisbehavingArchiveServerLeavesTheOldDatabaseAndTheNextUpdateHeals) {
  for (const auto& [what, manner] : kMisbehaviours) {
    SCOPED_TRACE(what);
    expectDownload_ = true;
    writeFile(live(), "old");
    service_.publish(std::string("of ") + what, "new");
    service_.set(&Service::archive, manner);
    EXPECT_EQ(update(), Answers{});
    EXPECT_EQ(readFile(live()), "old");
    EXPECT_EQ(LirvoxWeb::dtDbGenerated(), std::string("of ") + what);

    service_.publish(std::string("after ") + what, "new");
    EXPECT_EQ(update(), Answers{true});
    EXPECT_EQ(contents(caches()), (Files{{"lirvox/", ""}, {"lirvox/db1.sqlite", "new"}}));
    expectDownload_ = false;
    EXPECT_EQ(update(), Answers{true}) << "up to date";
  }
}

TEST_F(LoopbackUpdateTest, AFullDiskCallsNoCompletionAndTheNextUpdateHeals) {
  const std::string disk = caches();
  std::filesystem::create_directories(disk);
  if (::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=1m") != 0) {
    GTEST_SKIP() << "a small file system cannot be mounted: " << std::strerror(errno);
  }
  // No room for the download; for "tmp.zip" beside it; for what is in it; for the copy.
  // The last is only noticed when the live file is gone, as is meant.
  const Files old = {{"lirvox/", ""}, {"lirvox/db1.sqlite", "old"}};
  const std::pair<std::size_t, Files> cases[] = {
      {1'100'000, old}, {600'000, old}, {400'000, {}}, {280'000, {{"lirvox/", ""}}}};
  for (const auto& [size, left] : cases) {
    SCOPED_TRACE(size);
    expectDownload_ = true;
    for (const auto& entry : std::filesystem::directory_iterator(disk)) {
      std::filesystem::remove_all(entry);
    }
    writeFile(live(), "old");
    service_.publish("big " + std::to_string(size), noise(size, 1));
    EXPECT_EQ(update(), Answers{});
    Files found = contents(disk);
    if (left.empty()) {
      EXPECT_EQ(readFile(live()), "old");
      EXPECT_EQ(found.erase("tmp.zip"), 1U) << "stays where unpacking fails";
    } else {
      EXPECT_EQ(found, left);
    }
    service_.publish("small " + std::to_string(size), "new");
    EXPECT_EQ(update(), Answers{true});
    EXPECT_EQ(readFile(live()), "new");
  }
  ::umount2(disk.c_str(), MNT_DETACH);
}

class KilledUpdateTest : public LoopbackUpdateTest {
 protected:
  static pid_t start(const std::string& archive) {
    std::string program = LIRVOX_UPDATE_CHILD;
    std::string argument = archive;
    char* arguments[] = {program.data(), archive.empty() ? nullptr : argument.data(), nullptr};
    pid_t child = 0;
    EXPECT_EQ(::posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ), 0);
    return child;
  }
  static int wait(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  static int run(const std::string& archive) { return wait(start(archive)); }

  // Starts an update and kills it at a random moment of the time that one takes. Returns
  // whether it was still running.
  bool runKilled(const std::string& archive) {
    const pid_t child = start(archive);
    std::this_thread::sleep_for(std::chrono::microseconds(
        std::uniform_int_distribution<std::int64_t>(0, duration_.count())(random_)));
    ::kill(child, SIGKILL);
    return wait(child) == -1;
  }
  void measure(const std::string& archive) {
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(run(archive), 0);
    duration_ = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::steady_clock::now() - begin);
  }

  std::mt19937 random_{20260504};
  std::chrono::microseconds duration_{};
};

TEST_F(KilledUpdateTest, NeverLeavesADamagedDatabaseAndTheNextUpdateHeals) {
  constexpr int kKills = 100;
  constexpr std::size_t kBytes = 200'000;
  std::filesystem::create_directories(live().parent_path());
  service_.publish("first", noise(kBytes, 0));
  measure("");
  int killed = 0;
  std::set<std::string> known = {"", noise(kBytes, 0)};
  for (unsigned i = 1; killed < kKills; ++i) {
    const std::string next = noise(kBytes, i);
    known.insert(next);
    service_.publish("generation " + std::to_string(i), next);
    if (runKilled("")) ++killed;
    // One of the whole databases, or none at all.
    const std::string found = readFile(live());
    ASSERT_EQ(known.count(found), 1U) << "after kill " << killed;
    ASSERT_EQ(found.empty(), !std::filesystem::exists(live())) << "after kill " << killed;
    if (!found.empty() && i % 4 != 0) continue;
    ASSERT_EQ(run(""), 0);
    ASSERT_TRUE(std::filesystem::exists(live()) && known.count(readFile(live())) == 1);
  }
  service_.publish("last", "small");
  ASSERT_EQ(run(""), 0);
  EXPECT_EQ(contents(caches()), (Files{{"lirvox/", ""}, {"lirvox/db1.sqlite", "small"}}));
}

TEST_F(KilledUpdateTest, ALocalInstallationKeepsTheOldDatabaseUntilTheNewOneIsWhole) {
  const std::string archives[] = {platform_.folder.path("0.zip"), platform_.folder.path("1.zip")};
  const std::string databases[] = {noise(1'500'000, 1), noise(1'500'000, 2)};
  for (int i : {0, 1}) writeFile(archives[i], zipBytes({{"db1.sqlite", databases[i]}}));
  measure(archives[0]);
  for (int i = 0; i < 30; ++i) {
    runKilled(archives[i % 2]);
    const std::string found = readFile(live());
    ASSERT_TRUE(found == databases[0] || found == databases[1]);
  }
  ASSERT_EQ(run(archives[0]), 0);
  EXPECT_EQ(contents(live().parent_path()), (Files{{"db1.sqlite", databases[0]}}));
}

}  // namespace
}  // namespace lirvox::test
