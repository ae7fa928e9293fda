// Requests to a service and captures from a sound server while what libcurl and libpulse ask of the
// system fails, one after the other.
#include "lib/platform/HostTaskQueues.h"
#include "lib/platform/Platform.h"
#include "lib/platform/PulseAudio.h"
#include "lib/platform/linux/CurlHttpSession.h"
#include "tests/LoopbackServer.h"
#include "tests/support/Faults.h"
#include "tests/support/PulseServer.h"
#include "tests/support/TestPlatform.h"

namespace lirvox::test {
namespace {

struct Reply {
  std::string body;
  std::optional<LirvoxError> error;
};

Reply get(platform::HttpSession& session, const std::string& url) {
  Event done;
  Reply reply;
  session.startDataTask(
      url, [&](const std::string& body, const platform::HttpResponse&, const auto& error) {
        reply = {body, error};
        done.set();
      });
  EXPECT_TRUE(done.wait()) << "no end";
  return reply;
}

class ConnectionFaults : public testing::TestWithParam<Failing> {};

TEST_P(ConnectionFaults, ARequestEndsAndTheNextOneGetsThrough) {
  ::setenv("no_proxy", "*", 1);
  const TemporaryFolder folder;
  const std::string body(100'000, 'x');
  std::optional<LoopbackServer> server;
  std::optional<platform::CurlHttpSession> session;
  const auto operation = [&] {
    server.emplace([&](const auto&, const Connection& to) { to.reply(200, body); });
    platform::HttpSessionConfiguration configuration;
    configuration.timeoutForRequest = std::chrono::seconds(2);
    session.emplace(configuration, platform::current()->makeSerialQueue("test"),
                    folder.path("tmp"));
    const Reply reply = get(*session, server->url());
    EXPECT_NE(reply.error.has_value(), reply.body == body);
  };
  const auto check = [&] {
    EXPECT_TRUE(get(*session, server->url()).body == body);
    const auto before = std::chrono::steady_clock::now();
    session.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(10));
    server.reset();
  };
  EXPECT_GT(failEach(GetParam(), operation, check), 8);
}

// Hears when a capture has delivered, or has been interrupted.
struct Listener : platform::AudioSessionObserver {
  void audioSessionWasInterrupted(const platform::AudioSessionInterruption&) override {
    interrupted = true;
    over.set();
  }
  void audioSessionRouteChanged() override { routeChanged.set(); }

  std::atomic<bool> interrupted{false};
  Event over;
  Event routeChanged;
};

// A unit that calls `delivered` before it tells the listener.
std::unique_ptr<platform::AudioUnit> makeUnit(
    const platform::Platform& platform, const std::shared_ptr<Listener>& listener,
    const std::function<void()>& delivered = [] {}) {
  platform.audioSession->addObserver(listener);
  platform::AudioStatus status = platform::audioNoError;
  auto unit = platform.makeInputUnit(status);
  unit->setDeliveredStreamFormat(platform::interleavedPcm(11025, 1, 32));
  unit->setInputCallback([listener, delivered](auto&, const auto&, auto, auto) {
    delivered();
    listener->over.set();
    return platform::audioNoError;
  });
  return unit;
}

// Whether anything was delivered. Ends in any case, with a failure, an interruption or a delivery.
bool capture(const platform::Platform& platform) {
  const auto listener = std::make_shared<Listener>();
  const auto unit = makeUnit(platform, listener);
  const bool started =
      unit->initialize() == platform::audioNoError && unit->start() == platform::audioNoError;
  EXPECT_TRUE(!started || listener->over.wait()) << "neither sound nor an interruption";
  unit->stop();
  return started && !listener->interrupted;
}

TEST_P(ConnectionFaults, ACaptureEndsAndTheNextOneHears) {
  if (!PulseServer::isInstalled()) GTEST_SKIP() << "no pulseaudio, pactl or paplay here";
  // libpulse forgets to close what the server has sent for shared memory when a connection ends
  // just then.
  const TemporaryFolder folder;
  writeFile(folder.path("client.conf"), "enable-shm = no\n");
  ::setenv("PULSE_CLIENTCONFIG", folder.path("client.conf").c_str(), 1);
  const PulseServer server;
  platform::Platform platform = platform::systemPlatform();
  platform::usePulseAudio(platform, {"lirvox-test", "Test", server.address(), ""});
  drain(*platform::current()->mainQueue);  // which has its descriptors from then on
  const auto operation = [&] { capture(platform); };
  const auto check = [&] {
    // The first may still hear of the end of the connection that failed.
    EXPECT_TRUE(capture(platform) || capture(platform));
    EXPECT_EQ(platform.audioSession->availableInputs().size(), 2U);
    LirvoxError error;
    platform.audioSession->setActive(false, error);
  };
  EXPECT_GT(failEach(GetParam(), operation, check), 20);
  platform::install(platform::systemPlatform());  // the queue ends with what it still holds
}

TEST(ConnectionFaultsTest, AHostThatThrowsHearsTheNextDeliveryAndOfTheNextChange) {
  if (!PulseServer::isInstalled()) GTEST_SKIP() << "no pulseaudio, pactl or paplay here";
  const PulseServer server;
  platform::Platform platform = platform::systemPlatform();
  std::atomic<bool> refuses{true};
  Event refused;
  const auto execute = [&, queue = platform.mainQueue](platform::Task task) {
    if (!refuses) return queue->async(std::move(task));
    refused.set();
    throw std::runtime_error("the host's loop has ended");
  };
  platform.mainQueue = std::make_shared<platform::ExecutorTaskQueue>(execute, platform.mainQueue);
  platform::usePulseAudio(platform, {"lirvox-test", "Test", server.address(), ""});
  platform::install(platform);
  const auto listener = std::make_shared<Listener>();
  std::atomic<int> deliveries{0};
  const auto unit = makeUnit(platform, listener, [&] {
    if (++deliveries == 1) throw std::runtime_error("host");
  });
  EXPECT_EQ(unit->start(), platform::audioNoError);
  EXPECT_TRUE(listener->over.wait());
  EXPECT_EQ(unit->stop(), platform::audioNoError);

  EXPECT_TRUE(server.control("load-module module-null-sink sink_name=three"));
  EXPECT_TRUE(refused.wait());
  refuses = false;
  EXPECT_TRUE(server.control("load-module module-null-sink sink_name=four"));
  EXPECT_TRUE(listener->routeChanged.wait());
  LirvoxError error;
  platform.audioSession->setActive(false, error);
  platform::install(platform::systemPlatform());
}

INSTANTIATE_TEST_SUITE_P(Each, ConnectionFaults, testing::Values(Failing::once, Failing::onwards),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace lirvox::test
