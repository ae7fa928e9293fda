// The controller with real queues, a real audio thread and hosts that do not wait.
#include <span>

#include "lib/platform/MemoryAudioUnit.h"
#include "tests/support/ControllerTest.h"
#include "tests/support/LocalService.h"

// The C library guards its time zone with a lock that the thread sanitizer does not see. It is
// entered from `localTime` in ZipReader.cpp, whose name is known without the library's symbols.
extern "C" const char* __tsan_default_suppressions() {
  return "race:localTime";
}

namespace lirvox::test {
namespace {

struct ControllerThreads : ControllerTest {
  ControllerThreads() {
    platform_.useRealQueues();
    platform_.change([this](platform::Platform& services) {
      services.makeInputUnit = [this](platform::AudioStatus&) {
        return std::make_unique<platform::MemoryAudioUnit>(
            playing_, std::vector<std::uint32_t>{1024, 7, 300});
      };
    });
    install();
    lirvox_->setRecordingTime(1.5);
  }

  // A little more than a capture needs.
  static platform::MemoryAudioUnit::Samples beginningOf(const std::vector<std::int32_t>& words) {
    return std::make_shared<const std::vector<std::int32_t>>(words.begin(), words.begin() + 18000);
  }

  platform::MemoryAudioUnit::Samples playing_ = beginningOf(song_);
};

TEST_F(ControllerThreads, AnswerEveryCaptureThatIsNotCancelled) {
  constexpr std::size_t kCaptures = 15;
  for (std::size_t i = 0; i < kCaptures; ++i) {
    lirvox_->startRecognize();  // while passes before it finish
    while (lirvox_->isRecording()) std::this_thread::yield();
  }
  EXPECT_EQ(delegate_->waitForCalls(kCaptures), Calls(kCaptures, foundSong_));
}

// What else goes on while hosts call: updates, and a sound server that interrupts.
struct BusyControllerThreads : ControllerThreads {
  BusyControllerThreads() {
    const std::string database = readFile(databasePath_);
    writeFile(local_, zipBytes({{"db1.sqlite", database}}));
    archive_ = archiveOf(database);
    lirvox_->setSession(service_);
  }
  ~BusyControllerThreads() override { lirvox_->setSession(nullptr); }

  void update() {
    service_->publish(std::to_string(generation_++), archive_);
    lirvox_->downloadDatabaseIfNeeded([](bool opens) { EXPECT_TRUE(opens); });
  }
  void interruptUntil(const std::stop_token& stop) {
    using Type = platform::AudioSessionInterruption::Type;
    const auto session = platform::current()->audioSession;
    for (std::uint32_t option = 1; !stop.stop_requested(); option ^= 1U) {
      session->postInterruption({Type::began, 0});
      session->postInterruption({Type::ended, option});
      session->postRouteChange();
      std::this_thread::yield();
    }
  }

  const std::string local_ = platform_.folder.path("local.zip");
  std::string archive_;
  std::atomic<int> generation_{0};
  const std::shared_ptr<platform::TaskQueue> updates_ =
      platform::systemPlatform().makeSerialQueue("updates");
  const std::shared_ptr<LocalService> service_ =
      std::make_shared<LocalService>(updates_, platform_.folder.path("download"));
};

TEST_F(BusyControllerThreads, SurviveHostsThatCallFromEverywhere) {
  const std::vector<std::function<void()>> calls = {
      [this] { lirvox_->startRecognize(); },
      [this] { lirvox_->stopRecognize(); },
      [this] { lirvox_->setIsRecording(false); },
      [this] { lirvox_->setRecordingTime(1.0); },
      [this] { lirvox_->setMinimumFindedCnt(0); },
      [this] { lirvox_->setDelegate(std::make_shared<RecordedDelegate>()); },
      [this] { lirvox_->setDatabase(std::make_shared<LirvoxDatabase>(databasePath_)); },
      [this] { (void)(lirvox_->isRecording() || lirvox_->stopNow() || lirvox_->shouldStop()); },
      [this] { lirvox_->databaseInfo(); },
      [this] { update(); },
      [this] { lirvox_->updateDatabasePath(local_); },
      [this] { lirvox_->saveCurrentBufferToFile(); },
      [this] { EXPECT_EQ(samplesOf(lirvox_->processedBuffer()) % 2560, 0U); },
      [this] {
        // The end of an interruption may start a microphone before its capture begins: what it
        // delivers until then is lost.
        const auto bytes = lirvox_->bufferAudioData();
        const auto played = std::as_bytes(std::span(song_));
        EXPECT_TRUE(!bytes || std::search(played.begin(), played.end(), bytes->begin(),
                                          bytes->end()) != played.end());
      },
      [this] { (void)(lirvox_->microphone() && lirvox_->timeStartListening()); },
  };
  {
    const std::jthread server([this](const std::stop_token& stop) { interruptUntil(stop); });
    std::vector<std::jthread> hosts;
    for (unsigned seed = 1; seed <= 4; ++seed) {
      hosts.emplace_back([&calls, seed] {
        std::minstd_rand random(seed);
        for (int i = 0; i < 150; ++i) calls[random() % calls.size()]();
      });
    }
  }
  // Whatever happened, the next capture works as ever.
  for (int i = 0; i < 2; ++i) drain(*updates_);  // which takes two tasks of the queue
  lirvox_->stopRecognize();
  playing_ = beginningOf(other_);
  lirvox_->setDelegate(delegate_);
  lirvox_->startRecognize();
  while (delegate_->waitForCalls(1).back() != foundOther_) delegate_->takeCalls();
}

}  // namespace
}  // namespace lirvox::test
