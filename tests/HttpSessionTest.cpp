// HTTP requests against servers that behave and servers that do not.
#include "lib/platform/Platform.h"
#include "lib/platform/linux/CurlHttpSession.h"
#include "tests/LoopbackServer.h"
#include "tests/support/TemporaryFolder.h"

namespace lirvox::test {
namespace {

using platform::HttpResponse;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;
using Error = std::optional<LirvoxError>;

constexpr milliseconds kLong{20000};

struct Outcome {
  std::string body;
  int status = -1;
  Error error;
  std::thread::id thread;
};

struct HttpSessionTest : testing::Test {
  HttpSessionTest() {
    ::setenv("no_proxy", "*", 1);
    configuration_.timeoutForRequest = configuration_.timeoutForResource = kLong;
    configuration_.maximumConnectionsPerHost = 1;
    configuration_.additionalHeaders = {{"Accept", "application/json"}};
    std::filesystem::create_directory(folder_.path("tmp"));
  }

  std::shared_ptr<platform::HttpSession> makeSession() {
    return std::make_shared<platform::CurlHttpSession>(
        configuration_, platform::current()->makeSerialQueue("test"), folder_.path("tmp"));
  }

  Outcome get(const std::string& url) { return run(url, false); }
  Outcome download(const std::string& url) { return run(url, true); }
  Outcome run(const std::string& url, bool toFile) {
    Outcome outcome;
    Event done;
    auto session = makeSession();
    platform::HttpSession& running = *session;
    // The completion may be the last owner of its session.
    auto end = [&, owner = std::move(session)](const std::string& body,
                                               const HttpResponse& response,
                                               const Error& error) mutable {
      outcome = {toFile && !body.empty() ? readFile(body) : body, response.statusCode, error,
                 std::this_thread::get_id()};
      owner.reset();
      done.set();
    };
    toFile ? running.startDownloadTask(url, std::move(end))
           : running.startDataTask(url, std::move(end));
    EXPECT_TRUE(done.wait()) << url;
    return outcome;
  }

  TemporaryFolder folder_;
  platform::HttpSessionConfiguration configuration_;
};

TEST_F(HttpSessionTest, CarriesTheOneExtraHeaderFollowsRedirectsAndTakesAnyStatusForAResponse) {
  LoopbackServer server([](const std::string& target, const Connection& connection) {
    if (target == "/old") return connection.reply(301, "moved", "Location: /new\r\n");
    if (target != "/new") return connection.reply(target == "/missing" ? 404 : 200, target);
    connection.send("HTTP/1.1 200 OK\r\n\r\n12345678");
  });
  const Outcome good = get(server.url("/good?a=b%20c"));
  EXPECT_EQ(good.status, 200);
  EXPECT_EQ(good.body, "/good?a=b%20c");
  EXPECT_NE(good.thread, std::this_thread::get_id());
  EXPECT_EQ(server.requests().at(0),
            "GET /good?a=b%20c HTTP/1.1\r\nHost: " + server.url().substr(7) +
                "\r\nAccept: application/json\r\n\r\n");
  EXPECT_EQ(get(server.url("/old")).body, "12345678");
  const Outcome missing = download(server.url("/missing"));
  EXPECT_EQ(missing.status, 404);
  EXPECT_EQ(missing.body, "/missing");
  EXPECT_FALSE(missing.error);

  configuration_.largestDownloadInBytes = 8;
  EXPECT_EQ(download(server.url("/old")).body, "12345678") << "without the page before it";
  configuration_.largestDownloadInBytes = 7;
  EXPECT_EQ(download(server.url("/new")).error->localizedDescription, "File too large");
  EXPECT_TRUE(contents(folder_.path("tmp")).empty());
}

// What misbehaving services do is tried with whole updates.
TEST_F(HttpSessionTest, WhatCannotBeFetchedEndsInAnErrorWithinTheTimeOuts) {
  configuration_.timeoutForRequest = milliseconds(400);
  configuration_.timeoutForResource = milliseconds(1200);
  LoopbackServer server([&](const std::string& target, const Connection& connection) {
    if (target == "/to-file") connection.reply(302, "", "Location: file:///etc/passwd\r\n");
    if (target == "/trickle") connection.send("HTTP/1.1 200 OK\r\n\r\n");
    while (target == "/trickle" && connection.send("x")) {
      std::this_thread::sleep_for(milliseconds(100));
    }
  });
  const std::string file = "file://" + folder_.path("secret").string();
  writeFile(folder_.path("secret"), "secret");
  for (const std::string& url :
       {server.url("/to-file"), server.url("/trickle"), server.url("/closed-at-once"),
        std::string(), std::string("nothing"), file, std::string("http://127.0.0.1:1/refused"),
        std::string("http://bad host/"), std::string("ftp://127.0.0.1/")}) {
    for (const bool toFile : {false, true}) {
      SCOPED_TRACE(url + (toFile ? " to file" : ""));
      const auto start = Clock::now();
      const Outcome outcome = run(url, toFile);
      EXPECT_TRUE(outcome.error);
      EXPECT_EQ(outcome.body, "");
      EXPECT_LT(Clock::now() - start, kLong / 2);
    }
  }
  EXPECT_TRUE(contents(folder_.path("tmp")).empty()) << "no partial download is left";
}

TEST_F(HttpSessionTest, TasksOfOneHostWaitForEachOtherAndCompletionsNeverOverlap) {
  configuration_.timeoutForRequest = milliseconds(2000);
  std::atomic<int> unanswered{0};
  LoopbackServer server([&](const std::string& target, const Connection& connection) {
    EXPECT_EQ(unanswered++, 0);
    // Longer in all than the time-out of a request, which must not run while it waits.
    std::this_thread::sleep_for(milliseconds(400));
    unanswered--;
    connection.reply(200, target);
  });
  constexpr int kTasks = 6;
  std::atomic<int> inside{0};
  int finished = 0;
  Event done;
  const auto session = makeSession();
  for (int i = 0; i < kTasks; ++i) {
    const std::string target = "/" + std::to_string(i);
    session->startDataTask(server.url(target),
                           [&, target](const std::string& body, const HttpResponse&, const Error&) {
                             EXPECT_EQ(inside++, 0);
                             EXPECT_EQ(body, target);
                             inside--;
                             if (++finished == kTasks) done.set();
                           });
  }
  ASSERT_TRUE(done.wait());
}

TEST_F(HttpSessionTest, DestroyingTheSessionCancelsWhatRuns) {
  Event reached;
  LoopbackServer server([&](const std::string&, const Connection& connection) {
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n12345");
    reached.set();
    connection.waitUntilClosed();
  });
  std::atomic<int> called{0};
  auto session = makeSession();
  const auto count = [&](const std::string&, const HttpResponse&, const Error&) { ++called; };
  session->startDownloadTask(server.url("/a"), count);
  session->startDataTask(server.url("/b"), count);
  ASSERT_TRUE(reached.wait());
  const auto start = Clock::now();
  session.reset();
  EXPECT_LT(Clock::now() - start, kLong / 2);
  EXPECT_EQ(called, 0);
  EXPECT_TRUE(contents(folder_.path("tmp")).empty());
}

TEST_F(HttpSessionTest, AnObserverHearsHowFarATaskIsAndHowItEnded) {
  platform::HttpTaskReport last;
  Event halfway;
  configuration_.observer = [&](const platform::HttpTaskReport& report) {
    last = report;
    if (report.bytesReceived == 4) halfway.set();
  };
  LoopbackServer server([&](const std::string&, const Connection& connection) {
    connection.send("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 8\r\n\r\n1234");
    EXPECT_TRUE(halfway.wait());
    connection.send("5678");
  });
  EXPECT_EQ(download(server.url()).body, "12345678");
  EXPECT_TRUE(last.ended);
  EXPECT_EQ(last.bytesReceived, 8);
  EXPECT_EQ(last.bytesExpected, 8);
  EXPECT_EQ(last.statusCode, 200);
}

TEST_F(HttpSessionTest, HttpsIsCheckedAndNotLeftByARedirect) {
  LoopbackServer plain([](const std::string&, const Connection& c) { c.reply(200, "unsafe"); });
  const std::string ok = "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nsafe";
  writeFile(folder_.path("known"), ok);
  writeFile(folder_.path("unknown"), ok);
  writeFile(folder_.path("down"),
            "HTTP/1.1 302 X\r\nContent-Length: 0\r\nLocation: " + plain.url() + "\r\n\r\n");
  const std::string here = "cd '" + folder_.path().string() + "' && ";
  const std::string make =
      "openssl req -x509 -newkey rsa:2048 -nodes -days 1 -subj /CN=localhost -addext "
      "subjectAltName=IP:127.0.0.1 -keyout key.pem -out ours.pem 2>/dev/null";
  if (std::system((here + make).c_str()) != 0) GTEST_SKIP() << "openssl is not installed";
  const std::string serve =
      "openssl s_server -HTTP -naccept 3 -accept 127.0.0.1:0 -cert ours.pem -key key.pem 2>&1";
  std::FILE* const server = ::popen((here + serve).c_str(), "r");
  int port = 0;
  for (char line[200]; port == 0 && std::fgets(line, sizeof line, server);) {
    std::sscanf(line, "ACCEPT 127.0.0.1:%d", &port);
  }
  const std::string url = "https://127.0.0.1:" + std::to_string(port);

  EXPECT_TRUE(get(url + "/unknown").error) << "its authority is";
  configuration_.certificateAuthorities = folder_.path("ours.pem");
  EXPECT_EQ(get(url + "/known").body, "safe");
  EXPECT_TRUE(get(url + "/down").error);
  EXPECT_TRUE(plain.requests().empty());
  ::pclose(server);
}

// Acts as a static destructor of a host that runs after those of the library for https.
std::optional<LoopbackServer> serverAtExit;
std::shared_ptr<platform::HttpSession> sessionAtExit;
std::string urlAtExit() {
  return "https" + serverAtExit->url().substr(4);
}
void requestAtExit() {
  Event done;
  sessionAtExit->startDataTask(urlAtExit(), [&](const auto&, const auto&, const Error& error) {
    if (!error) ::_exit(1);
    done.set();
  });
  if (!done.wait()) ::_exit(2);
  sessionAtExit.reset();
}

TEST_F(HttpSessionTest, TheProcessMayEndWhileSecureRequestsRunAndBegin) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  configuration_.maximumConnectionsPerHost = 0;  // no limit
  for (int i = 0; i < 3; ++i) {
    const auto exitWhileRequestsRun = [&] {
      std::atexit(requestAtExit);
      serverAtExit.emplace([](const std::string&, const Connection&) {});
      sessionAtExit = makeSession();
      for (int request = 0; request < 4; ++request) {
        sessionAtExit->startDataTask(urlAtExit(), [](const auto&...) {});
      }
      std::exit(0);
    };
    EXPECT_EXIT(exitWhileRequestsRun(), testing::ExitedWithCode(0), "");
  }
}

}  // namespace
}  // namespace lirvox::test
