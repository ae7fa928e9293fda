// The whole way through a real web server: published music arrives and is recognised.
#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "catalog/Catalog.h"
#include "catalog/Publish.h"
#include "catalog/TrackFingerprinter.h"
#include "lib/Hits.h"
#include "lib/HitsByTrack.h"
#include "lib/LirvoxDatabase.h"
#include "lib/LirvoxMiniSpectogram.h"
#include "lib/LirvoxRecognize.h"
#include "lib/LirvoxSettings.h"
#include "lib/LirvoxUtilities.h"
#include "lib/LirvoxWeb.h"
#include "lib/ProcessingPass.h"
#include "lib/TrackOrder.h"
#include "lib/Vote.h"
#include "lib/platform/linux/CurlHttpSession.h"
#include "tests/LoopbackServer.h"
#include "tests/support/TestPlatform.h"
#include "tests/support/Tune.h"

namespace lirvox::test {
namespace {

using std::chrono::milliseconds;

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  return address;
}

int freePort() {
  const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = loopback(0);
  socklen_t length = sizeof address;
  ::bind(socket, reinterpret_cast<sockaddr*>(&address), length);
  ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
  ::close(socket);
  return ntohs(address.sin_port);
}

void replace(std::string& text, const std::string& what, const std::string& by) {
  const std::size_t at = text.find(what);
  ASSERT_NE(at, std::string::npos) << what;
  text.replace(at, what.size(), by);
}

// nginx with the configuration that the documentation shows.
class Nginx {
 public:
  Nginx(const std::filesystem::path& folder, int port) : port_(port) {
    const std::string documentation = readFile(LIRVOX_SERVICE_DOCUMENTATION);
    const std::size_t begin = documentation.find("```nginx") + 8;
    std::string server = documentation.substr(begin, documentation.find("```", begin) - begin);
    replace(server, "listen 80", "listen 127.0.0.1:" + std::to_string(port));
    replace(server, "/srv/lirvox", folder / "www");
    std::string temporary;
    for (const char* const kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
      temporary += std::string(kind) + "_temp_path " + (folder / kind).string() + ";\n";
    }
    const std::string user = ::geteuid() == 0 ? "user root;\n" : "";
    writeFile(folder / "nginx.conf", user + "daemon off;\npid " + (folder / "pid").string() +
                                         ";\nevents {}\nhttp {\naccess_log " +
                                         (folder / "access.log").string() + ";\n" + temporary +
                                         server + "}\n");
    std::string program = "nginx";
    std::vector<std::string> arguments = {program, "-e", folder / "error.log", "-c",
                                          folder / "nginx.conf"};
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    running_ = ::posix_spawnp(&child_, "nginx", nullptr, nullptr, pointers.data(), environ) == 0 &&
               answers();
  }
  ~Nginx() {
    if (child_ == 0) return;
    ::kill(child_, SIGTERM);
    ::waitpid(child_, nullptr, 0);
  }
  Nginx(const Nginx&) = delete;
  Nginx& operator=(const Nginx&) = delete;

  bool running() const { return running_; }

 private:
  bool answers() const {
    for (int attempt = 0; attempt < 500; ++attempt) {
      const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
      const sockaddr_in address = loopback(port_);
      const bool connected =
          ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
      ::close(socket);
      if (connected) return true;
      std::this_thread::sleep_for(milliseconds(20));
    }
    return false;
  }

  const int port_;
  pid_t child_ = 0;
  bool running_ = false;
};

class NginxTest : public testing::Test {
 protected:
  static constexpr double kSeconds = 30.0;

  NginxTest() {
    url_ = "http://127.0.0.1:" + std::to_string(port_);
    ::setenv("LIRVOX_API_URL", url_.c_str(), 1);
    ::setenv("LIRVOX_SERVICE_HOST_FOLDER", "127.0.0.1", 1);
    ::setenv("no_proxy", "*", 1);
  }

  void addTune(unsigned seed) {
    catalog::Catalog music(platform_.folder.path("music.db"), {});
    catalog::TrackFingerprinter fingerprinter(music.rowRule());
    const auto words = makeTune(seed, kSeconds);
    fingerprinter.add(words.data(), words.size());
    const std::string name = std::to_string(seed);
    catalog::NewTrack track;
    track.info.title = name;
    track.info.path = "/music/" + name;
    track.info.durationInSeconds = kSeconds;
    track.rows = fingerprinter.finish();
    music.add(std::move(track));
    music.commit();
  }
  void publish() {
    catalog::publish(platform_.folder.path("music.db"), platform_.folder.path("www"), {url_, ""});
  }

  std::optional<bool> update() {
    const std::shared_ptr<platform::HttpSession> session =
        std::make_shared<platform::CurlHttpSession>(LirvoxWeb::sessionConfiguration(),
                                                    system_.makeSerialQueue("test"),
                                                    platform_.folder.path("downloads"));
    std::optional<bool> answer;
    Event answered;
    LirvoxWeb::downloadDatabaseIfNeeded(session, "key", [&](bool good) {
      answer = good;
      answered.set();
    });
    answered.waitFor(milliseconds(30000));
    return answer;
  }
  std::size_t archivesFetched() const {
    const std::string log = readFile(platform_.folder.path("access.log"));
    std::size_t count = 0;
    for (std::size_t at = 0; (at = log.find("GET /archives/", at)) != std::string::npos; ++at) {
      ++count;
    }
    return count;
  }

  // The id that five seconds from the middle of a tune are recognised as.
  static std::string recognize(unsigned seed) {
    const auto words = makeTune(seed, kSeconds);
    const auto history = LirvoxUtilities::initHistoryInfo();
    LirvoxAudioFFT fft;
    std::vector<float> block(2560);
    for (std::size_t i = 0; i < 21; ++i) {
      convertSamples(words.data() + 100000 + i * block.size(), block.size(), block.data());
      LirvoxMiniSpectogram::do_4_mini_specgrams(block.data(), fft, *history);
    }
    const auto hashes = LirvoxRecognize::queryHashes(*history);
    const auto rows = LirvoxDatabase(LirvoxSettings::databasePath()).selectFingerprints(hashes);
    const PassHits pass = formHits(rows ? &*rows : nullptr, hashes);
    const HitsByTrack hits(pass);
    const auto result = chooseResult(vote(hits, chooseTrackOrder(hits, 30)).candidates, 30);
    return result ? result->result_id.string() : "nothing";
  }

  TestPlatform platform_;
  const platform::Platform system_ = platform::systemPlatform();
  const int port_ = freePort();
  std::string url_;
};

TEST_F(NginxTest, PublishedMusicArrivesOnceAndIsRecognised) {
  if (std::system("PATH=$PATH:/usr/sbin command -v nginx >/dev/null") != 0) {
    GTEST_SKIP() << "nginx is not installed";
  }
  ::setenv("PATH", (std::string(std::getenv("PATH")) + ":/usr/sbin").c_str(), 1);
  addTune(1);
  publish();
  const Nginx nginx(platform_.folder.path(), port_);
  ASSERT_TRUE(nginx.running()) << readFile(platform_.folder.path("error.log"));

  EXPECT_EQ(update(), true) << "the first one downloads";
  EXPECT_EQ(archivesFetched(), 1U);
  EXPECT_EQ(recognize(1), "1");
  EXPECT_EQ(recognize(2), "nothing");
  EXPECT_EQ(update(), true) << "the second one is up to date";
  EXPECT_EQ(archivesFetched(), 1U);

  addTune(2);
  publish();
  EXPECT_EQ(update(), true) << "a new generation is fetched";
  EXPECT_EQ(archivesFetched(), 2U);
  EXPECT_EQ(recognize(1), "1");
  EXPECT_EQ(recognize(2), "2");
}

}  // namespace
}  // namespace lirvox::test
