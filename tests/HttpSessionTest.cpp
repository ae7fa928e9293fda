// HTTP requests against servers that behave and servers that do not.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "lib/platform/HttpSession.h"
#include "lib/platform/Platform.h"
#include "lib/platform/linux/CurlHttpSession.h"
#include "tests/LoopbackServer.h"
#include "tests/support/TemporaryFolder.h"

namespace lirvox::test {
namespace {

using platform::HttpResponse;
using platform::HttpSessionConfiguration;
using std::chrono::milliseconds;
using Error = std::optional<LirvoxError>;

constexpr milliseconds kLong{20000};

struct Outcome {
  std::string body;
  int status = -1;
  Error error;
  std::thread::id thread;
};

class HttpSessionTest : public testing::Test {
 protected:
  HttpSessionTest() {
    ::setenv("no_proxy", "*", 1);
    configuration_.timeoutForRequest = milliseconds(400);
    configuration_.timeoutForResource = milliseconds(1200);
    configuration_.maximumConnectionsPerHost = 1;
    configuration_.additionalHeaders = {{"Accept", "application/json"}};
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
    const auto end = [&](const std::string& body, const HttpResponse& response,
                         const Error& error) {
      outcome = {body, response.statusCode, error, std::this_thread::get_id()};
      done.set();
    };
    const auto session = makeSession();
    if (!toFile) session->startDataTask(url, end);
    if (toFile) {
      session->startDownloadTask(
          url, [&](const std::string& location, const HttpResponse& response, const Error& error) {
            end(location.empty() ? "" : readFile(location), response, error);
          });
    }
    EXPECT_TRUE(done.waitFor(kLong)) << url;
    return outcome;
  }

  TemporaryFolder folder_;
  HttpSessionConfiguration configuration_;
};

TEST_F(HttpSessionTest, RequestsCarryTheOneExtraHeaderAndAnyStatusIsAResponse) {
  LoopbackServer server([](const std::string& target, const Connection& connection) {
    connection.reply(target == "/good?a=b%20c" ? 200 : 404, "body of " + target);
  });
  const Outcome good = get(server.url("/good?a=b%20c"));
  EXPECT_EQ(good.status, 200);
  EXPECT_EQ(good.body, "body of /good?a=b%20c");
  EXPECT_NE(good.thread, std::this_thread::get_id());
  EXPECT_EQ(server.requests().at(0),
            "GET /good?a=b%20c HTTP/1.1\r\nHost: " + server.url().substr(7) +
                "\r\nAccept: application/json\r\n\r\n");
  const Outcome missing = download(server.url("/missing"));
  EXPECT_EQ(missing.status, 404);
  EXPECT_EQ(missing.body, "body of /missing");
  EXPECT_FALSE(missing.error);
}

TEST_F(HttpSessionTest, EveryMisbehaviourEndsInAnErrorWithinItsTimeOut) {
  const std::string megabyte(1 << 20, 'x');
  LoopbackServer server([&](const std::string& target, const Connection& connection) {
    if (target == "/silent") connection.waitUntilClosed();
    if (target == "/garbage") connection.send("\1\2\3\4 nothing of the kind\r\n\r\n");
    if (target == "/head-only") {
      connection.send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n12345");
      connection.waitUntilClosed();
    }
    if (target == "/short") connection.send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n12345");
    if (target == "/loop") connection.reply(302, "", "Location: /loop\r\n");
    if (target == "/to-file") connection.reply(302, "", "Location: file:///etc/passwd\r\n");
    if (target == "/endless") {
      connection.send("HTTP/1.1 200 OK\r\n\r\n");
      while (connection.send(megabyte)) {
      }
    }
    if (target == "/trickle") {
      connection.send("HTTP/1.1 200 OK\r\n\r\n");
      while (connection.send("x")) std::this_thread::sleep_for(milliseconds(100));
    }
  });
  for (const char* const target : {"/silent", "/garbage", "/head-only", "/short", "/loop",
                                   "/to-file", "/endless", "/trickle", "/closed-at-once"}) {
    for (const bool toFile : {false, true}) {
      SCOPED_TRACE(std::string(target) + (toFile ? " to file" : ""));
      const auto start = std::chrono::steady_clock::now();
      const Outcome outcome = run(server.url(target), toFile);
      EXPECT_TRUE(outcome.error);
      EXPECT_EQ(outcome.body, "");
      EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(5000));
    }
  }
  for (const char* const url : {"", "nothing", "file:///etc/passwd", "http://127.0.0.1:1/refused",
                                "http://bad host/", "ftp://127.0.0.1/"}) {
    EXPECT_TRUE(get(url).error) << url;
  }
  EXPECT_TRUE(contents(folder_.path("tmp")).empty()) << "no partial download is left";
}

TEST_F(HttpSessionTest, RedirectsAreFollowed) {
  LoopbackServer server([](const std::string& target, const Connection& connection) {
    if (target == "/old") connection.reply(301, "moved", "Location: /new\r\n");
    if (target == "/new") connection.reply(200, "here");
  });
  EXPECT_EQ(get(server.url("/old")).body, "here");
  EXPECT_EQ(download(server.url("/old")).body, "here") << "without the page that redirected";
}

TEST_F(HttpSessionTest, TasksOfOneHostWaitForEachOtherAndCompletionsNeverOverlap) {
  configuration_.timeoutForRequest = milliseconds(2000);
  configuration_.timeoutForResource = kLong;
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
  std::atomic<int> finished{0};
  std::atomic<int> good{0};
  Event done;
  const auto session = makeSession();
  for (int i = 0; i < kTasks; ++i) {
    session->startDataTask(server.url("/" + std::to_string(i)),
                           [&, i](const std::string& body, const HttpResponse&, const Error&) {
                             EXPECT_EQ(inside++, 0);
                             good += body == "/" + std::to_string(i) ? 1 : 0;
                             inside--;
                             if (++finished == kTasks) done.set();
                           });
  }
  ASSERT_TRUE(done.waitFor(kLong));
  EXPECT_EQ(good, kTasks);
}

TEST_F(HttpSessionTest, DestroyingTheSessionCancelsWhatRuns) {
  configuration_.timeoutForRequest = configuration_.timeoutForResource = kLong;
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
  ASSERT_TRUE(reached.waitFor(kLong));
  const auto start = std::chrono::steady_clock::now();
  session.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(2000));
  EXPECT_EQ(called, 0);
  EXPECT_TRUE(contents(folder_.path("tmp")).empty());
}

TEST_F(HttpSessionTest, ACompletionMayBeTheLastOwnerOfItsSession) {
  LoopbackServer server(
      [](const std::string&, const Connection& connection) { connection.reply(200, "x"); });
  Event done;
  auto session = makeSession();
  platform::HttpSession& running = *session;
  running.startDataTask(server.url(),
                        [&done, owner = std::move(session)](const std::string&, const HttpResponse&,
                                                            const Error&) mutable {
                          owner.reset();
                          done.set();
                        });
  EXPECT_TRUE(done.waitFor(kLong));
}

TEST_F(HttpSessionTest, AnObserverHearsHowFarATaskIsAndHowItEnded) {
  configuration_.timeoutForResource = kLong;
  std::vector<platform::HttpTaskReport> reports;
  configuration_.observer = [&](const platform::HttpTaskReport& r) { reports.push_back(r); };
  LoopbackServer server([](const std::string&, const Connection& connection) {
    connection.send("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 8\r\n\r\n1234");
    std::this_thread::sleep_for(milliseconds(350));
    connection.send("5678");
  });
  EXPECT_EQ(download(server.url()).body, "12345678");
  ASSERT_GE(reports.size(), 2U);
  EXPECT_TRUE(reports.back().ended);
  EXPECT_EQ(reports.back().bytesReceived, 8);
  EXPECT_EQ(reports.back().bytesExpected, 8);
  EXPECT_EQ(reports.back().statusCode, 200);
}

// A server with a certificate of its own, which redirects to plain HTTP.
constexpr const char* kTlsServer = R"(
import http.server, ssl, sys
class Handler(http.server.BaseHTTPRequestHandler):
    def log_message(self, *args): pass
    def do_GET(self):
        self.send_response(302 if self.path == '/down' else 200)
        self.send_header('Location', sys.argv[2])
        self.send_header('Content-Length', '4')
        self.end_headers()
        self.wfile.write(b'safe')
server = http.server.HTTPServer(('127.0.0.1', 0), Handler)
context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(sys.argv[1])
server.socket = context.wrap_socket(server.socket, server_side=True)
print(server.server_address[1], flush=True)
for _ in range(int(sys.argv[3])): server.handle_request()
)";

TEST_F(HttpSessionTest, HttpsIsCheckedAndNotLeftByARedirect) {
  configuration_.timeoutForRequest = configuration_.timeoutForResource = kLong;
  const std::string certificate = folder_.path("certificate.pem");
  const std::string make =
      "openssl req -x509 -newkey rsa:2048 -nodes -days 1 -subj /CN=localhost "
      "-addext subjectAltName=IP:127.0.0.1 -keyout '" +
      certificate + "' -out '" + certificate + ".c' 2>/dev/null && cat '" + certificate +
      ".c' >> '" + certificate + "'";
  if (std::system(make.c_str()) != 0 || std::system("command -v python3 >/dev/null") != 0) {
    GTEST_SKIP() << "openssl or python3 is not installed";
  }
  LoopbackServer plain(
      [](const std::string&, const Connection& connection) { connection.reply(200, "unsafe"); });
  writeFile(folder_.path("server.py"), kTlsServer);
  const std::string command = "python3 '" + folder_.path("server.py").string() + "' '" +
                              certificate + "' " + plain.url("/plain") + " 3";
  std::FILE* const server = ::popen(command.c_str(), "r");
  ASSERT_NE(server, nullptr);
  int port = 0;
  ASSERT_EQ(std::fscanf(server, "%d", &port), 1);
  const std::string url = "https://127.0.0.1:" + std::to_string(port);

  EXPECT_TRUE(get(url + "/unknown-authority").error);
  configuration_.certificateAuthorities = certificate;
  EXPECT_EQ(get(url + "/known").body, "safe");
  EXPECT_TRUE(get(url + "/down").error);
  EXPECT_TRUE(plain.requests().empty());
  ::pclose(server);
}

}  // namespace
}  // namespace lirvox::test
