// Hosts that misbehave or do what few do: delegates, settings, forks.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "lib/HistoryInfo.h"
#include "tests/LoopbackServer.h"
#include "tests/support/ControllerTest.h"

namespace lirvox::test {
namespace {

using namespace std::chrono_literals;

// Does what a test says when it is told an outcome.
struct ActingDelegate : LirvoxDelegate {
  explicit ActingDelegate(std::function<void()> what) : act(std::move(what)) {}
  void didRecognize(std::int32_t, float, float) override { act(); }
  void didNotRecognize() override { act(); }
  const std::function<void()> act;
};

struct HostFaults : ControllerTest {
  HostFaults() { install(); }

  void expectToWork() {
    lirvox_->setDelegate(delegate_);
    delegate_->takeCalls();
    EXPECT_EQ(outcomeOf(song_), Calls{foundSong_});
  }
};

TEST_F(HostFaults, DelegatesMayThrowAndCallAnything) {
  const std::vector<std::function<void()>> acts = {
      [] { throw std::runtime_error("host"); },
      [] { throw 7; },  // NOLINT: hosts do
      [this] { lirvox_->setDelegate(nullptr); },
      [this] { lirvox_->setDatabase(nullptr); },
      [this] { lirvox_->stopRecognize(); },
      [this] {
        lirvox_->startRecognize();
        lirvox_->stopRecognize();
      },
      [this] {
        lirvox_->startRecognizeFromFile();
        lirvox_->stopRecognize();
      },
      [this] { lirvox_->setIsRecording(false); },
  };
  for (const auto& act : acts) {
    int told = 0;
    lirvox_->setDelegate(std::make_shared<ActingDelegate>([&] {
      ++told;
      act();
    }));
    outcomeOf(song_);
    platform_.scheduler.advance(10s);
    EXPECT_EQ(told, 1);
    cancel();
    lirvox_->setDatabase(std::make_shared<LirvoxDatabase>(databasePath_));
    expectToWork();
  }
  EXPECT_TRUE(platform_.log->has("exception: host"));
  EXPECT_TRUE(platform_.log->has("unknown exception"));
}

TEST_F(HostFaults, ADelegateMayListenOn) {
  int told = 0;
  lirvox_->setDelegate(std::make_shared<ActingDelegate>([&] {
    if (++told < 3) lirvox_->startRecognize();
  }));
  start();
  for (int i = 0; i < 3; ++i) outcomeAfter(song_);
  EXPECT_EQ(told, 3);
  EXPECT_FALSE(lirvox_->isRecording());
}

TEST_F(HostFaults, ADelegateThatBlocksHoldsUpNobodyButTheNextOutcome) {
  platform_.useRealQueues();
  std::promise<void> begun;
  std::promise<void> end;
  lirvox_->setDelegate(std::make_shared<ActingDelegate>([&] {
    begun.set_value();
    end.get_future().wait();
  }));
  start();
  deliver(song_);
  begun.get_future().wait();
  lirvox_->setDelegate(delegate_);
  for (int i = 0; i < 3; ++i) {
    start();
    lirvox_->stopRecognize();
  }
  EXPECT_TRUE(lirvox_->databaseInfo());
  start();
  deliver(song_);
  end.set_value();
  EXPECT_EQ(delegate_->waitForCalls(1).front().trackId, 7);
}

TEST_F(HostFaults, WithoutEngineOrRecordAPassHasItsOwn) {
  for (const auto& record : {std::shared_ptr<HistoryInfo>(), std::make_shared<HistoryInfo>()}) {
    lirvox_->setFft(nullptr);
    lirvox_->setHistoryInfo(record);
    expectToWork();
  }
  start();
  lirvox_->setHistoryInfo(nullptr);
  EXPECT_EQ(outcomeAfter(song_), Calls{foundSong_});
}

TEST_F(HostFaults, AForkedChildStartsNothingAndLeavesTheParentAlone) {
  start();
  const pid_t child = ::fork();
  if (child == 0) {
    lirvox_->stopRecognize();
    lirvox_->setIsRecording(false);
    lirvox_->startRecognizeFromFile();
    lirvox_->downloadDatabaseIfNeeded(nullptr);
    lirvox_->updateDatabasePath("none");
    const bool asItWas = lirvox_->isRecording() && unitLog() == "start " &&
                         !platform_.log->has("File does not exist");
    ::_exit(asItWas && platform_.log->has("forked") ? 0 : 1);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(outcomeAfter(song_), Calls{foundSong_});
}

TEST_F(HostFaults, NoDescriptorOfTheLibraryGetsIntoAProgramThatIsExecuted) {
  const auto countInherited = [] {
    int inherited = 0;
    for (int file = 3; file < 256; ++file) {
      const int flags = ::fcntl(file, F_GETFD);
      inherited += flags >= 0 && (flags & FD_CLOEXEC) == 0 ? 1 : 0;
    }
    return inherited;
  };
  Event asked;
  LoopbackServer server([&](const auto&, const Connection& connection) {
    asked.set();
    connection.waitUntilClosed();
  });
  const int before = countInherited();
  platform_.useRealQueues();
  start();
  EXPECT_EQ(countInherited(), before);
  lirvox_->startRecognizeFromFile();
  EXPECT_EQ(countInherited(), before);
  lirvox_->stopRecognize();

  const auto session = platform::current()->makeHttpSession({});
  session->startDataTask(server.url(), [](const auto&...) {});
  EXPECT_TRUE(asked.wait());
  EXPECT_EQ(countInherited(), before + 2) << "with which libcurl wakes itself";
}

}  // namespace
}  // namespace lirvox::test
