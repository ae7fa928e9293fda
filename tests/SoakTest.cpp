// The life of a recognizer in virtual time: a capture every 5 seconds, and all that comes between.
// LIRVOX_SOAK_CAPTURES sets its length (17280 make a day), LIRVOX_SOAK_SEED its course.
#include <deque>
#include <iostream>

#include <malloc.h>

#include "tests/support/ControllerTest.h"
#include "tests/support/LocalService.h"

namespace lirvox::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;
using Interruption = platform::AudioSessionInterruption;

#ifdef NDEBUG
constexpr unsigned kUsualCaptures = 1440;
#else
constexpr unsigned kUsualCaptures = 320;
#endif

unsigned setting(const char* name, unsigned usual) {
  const char* const value = std::getenv(name);
  return value ? static_cast<unsigned>(std::strtoul(value, nullptr, 10)) : usual;
}

// What must not grow. Sanitizers, which have allocators of their own, show no bytes here.
struct Holdings {
  const struct mallinfo2 heap = mallinfo2();
  const std::size_t bytes = heap.uordblks + heap.hblkhd;
  const std::ptrdiff_t descriptors = openDescriptors();
};

struct NoLog : platform::Log {
  void write(std::string_view) override {}
};

struct Soak : ControllerTest {
  Soak() {
    platform_.change(
        [](platform::Platform& services) { services.log = std::make_shared<NoLog>(); });
    script_->whenStopped = [this] { hasStopped(); };
    install();
    database_ = readFile(databasePath_);
    downloaded_ = archiveOf(database_);
    writeFile(local_, zipBytes({{"db1.sqlite", database_}}));
    lirvox_->setSession(service_);
    lirvox_->setRecordingTime(1.5);  // 16538 samples
  }
  ~Soak() override {
    lirvox_->setSession(nullptr);
    script_->whenStopped = [] {};
  }

  // On a thread of its own, which takes along what the allocator keeps for it.
  void run(unsigned captures) {
    std::thread([&] {
      for (unsigned i = 1; i <= captures; ++i) {
        ASSERT_NO_FATAL_FAILURE(capture()) << "capture " << i;
        if (i % 16 != 0) continue;
        ASSERT_NO_FATAL_FAILURE(settle()) << "capture " << i;
      }
      settle();
      update(true);
      settle();
    }).join();
  }

  bool isOn() const { return !script_->calls.empty() && script_->calls.back() == "start"; }
  platform::Clock::Date now() const { return platform_.scheduler.clock()->now(); }
  bool oneIn(unsigned count) { return random_() % count == 0; }

  // Waits until everything is over, and compares what was heard with what should be.
  void settle() {
    platform_.scheduler.advance(10s);
    const auto calls = delegate_->takeCalls();
    ASSERT_EQ(calls.size(), expected_.size()) << "answered once each";
    for (const auto& call : calls) {
      const std::optional<std::int32_t> track = expected_.front();
      expected_.pop_front();
      ASSERT_EQ(call.trackId, track.value_or(call.trackId));
    }
    ASSERT_EQ(answeredUpdates_, expectedUpdates_);
    ASSERT_FALSE(isOn()) << "nobody listens";
    ASSERT_FALSE(lirvox_->bufferAudioData());
  }

  void capture() {
    static constexpr std::int32_t kTracks[] = {7, 8, 0};
    const std::size_t which = random_() % 3;
    const std::vector<std::int32_t>& heard = *pieces_[which];
    const auto begin = now();
    script_->calls.clear();
    ASSERT_NO_FATAL_FAILURE(start());
    endsInterruptionWhileStopping_ = oneIn(8);
    std::size_t at = 0;
    for (; lirvox_->isRecording(); disturb()) at += deliver(heard, at);
    if (!lirvox_->stopNow()) {
      const bool isWhole = at >= 16538;
      expected_.push_back(isWhole ? std::optional(kTracks[which]) : std::nullopt);
    }
    const auto taken = now() - begin;
    if (oneIn(8)) announceInterruption(true);
    if (oneIn(4)) return;  // the next one starts before the pass of this one has ended
    if (oneIn(8)) lirvox_->stopRecognize();  // comes too late
    platform_.scheduler.advance(std::max(nanoseconds(5s - taken), nanoseconds(0)));
  }

  std::size_t deliver(const std::vector<std::int32_t>& heard, std::size_t at) {
    const std::size_t size = std::min<std::size_t>(1 + random_() % 1024, heard.size() - at);
    const auto from = heard.begin() + static_cast<std::ptrdiff_t>(at);
    script_->deliver({from, from + static_cast<std::ptrdiff_t>(size)});
    // Now and then the queues lag behind.
    if (oneIn(3)) {
      platform_.scheduler.runOne();
    } else {
      platform_.scheduler.advance(nanoseconds(1s) * size / 11025);
    }
    return size;
  }

  // What may come between two deliveries.
  void disturb() {
    const std::function<void()> events[] = {
        [this] { lirvox_->stopRecognize(); },
        [this] { lirvox_->setIsRecording(false); },
        [this] { interrupt(); },
        [this] { lirvox_->startRecognize(); },
        [this] { update(); },
        [this] { EXPECT_TRUE(lirvox_->updateDatabasePath(local_)); },
    };
    const std::size_t event = random_() % 400;
    if (lirvox_->isRecording() && event < std::size(events)) events[event]();
  }

  void interrupt() {
    const bool resumes = !oneIn(3);
    announceInterruption(resumes);
    EXPECT_EQ(isOn(), resumes);
    if (!resumes) oneIn(2) ? lirvox_->stopRecognize() : lirvox_->setIsRecording(false);
  }

  // An interruption may end at any time, on another thread: while a capture ends, too.
  void hasStopped() {
    if (!std::exchange(endsInterruptionWhileStopping_, false)) return;
    platform::current()->audioSession->postInterruption({Interruption::Type::ended, 1U});
  }

  void announceInterruption(bool resumes) {
    endsInterruptionWhileStopping_ = false;
    const auto session = platform::current()->audioSession;
    session->postInterruption({Interruption::Type::began, 0});
    EXPECT_FALSE(isOn());
    platform_.scheduler.advance(std::chrono::milliseconds(oneIn(2) ? 0 : random_() % 20000));
    session->postInterruption({Interruption::Type::ended, resumes ? 1U : 0U});
  }

  // One at a time: what is published does not change while it is fetched.
  void update(bool mustWork = false) {
    if (now() < updateEnds_) return;
    updateEnds_ = now() + 2s;
    const bool isNew = mustWork || oneIn(2);
    const bool works = mustWork || !isNew || !oneIn(3);
    if (isNew) ++generation_;
    service_->publish(std::to_string(generation_), works ? downloaded_ : oneIn(2) ? "" : "no zip");
    lirvox_->downloadDatabaseIfNeeded([this](bool opens) { answeredUpdates_ += opens ? 1 : 1000; });
    if (works) ++expectedUpdates_;
  }

  std::minstd_rand random_{setting("LIRVOX_SOAK_SEED", 1)};
  bool endsInterruptionWhileStopping_ = false;
  const std::vector<std::int32_t> unknown_ = makeTune(3, 5.0);
  const std::vector<const std::vector<std::int32_t>*> pieces_ = {&song_, &other_, &unknown_};

  const std::filesystem::path local_ = platform_.folder.path("local.zip");
  std::string database_;
  std::string downloaded_;
  const std::shared_ptr<LocalService> service_ = std::make_shared<LocalService>(
      platform_.scheduler.queue(), platform_.folder.path("download"), 700ms);

  // Of captures that are still to be answered; none where either answer is right.
  std::deque<std::optional<std::int32_t>> expected_;
  int generation_ = 1;
  platform::Clock::Date updateEnds_;
  int expectedUpdates_ = 0;
  int answeredUpdates_ = 0;
};

TEST_F(Soak, LosesNothingAndKeepsNothing) {
  const unsigned captures = setting("LIRVOX_SOAK_CAPTURES", kUsualCaptures);
  const auto begin = now();
  run(captures / 20);
  const Holdings atFirst;
  run(captures - captures / 20);
  const Holdings atLast;
  EXPECT_LE(atLast.bytes, atFirst.bytes + 4096);
  EXPECT_EQ(atLast.descriptors, atFirst.descriptors);
  EXPECT_EQ(contents(platform_.folder.path("caches")),
            (Files{{"lirvox/", ""}, {"lirvox/db1.sqlite", database_}}));
  std::cout << captures << " captures in " << (now() - begin) / 1h << " h, " << answeredUpdates_
            << " updates; bytes held " << atFirst.bytes << " and " << atLast.bytes << '\n';
}

}  // namespace
}  // namespace lirvox::test
