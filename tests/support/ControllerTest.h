// What tests of the controller start from.
#pragma once

#include "RecordedDelegate.h"
#include "ScriptedAudio.h"
#include "TestPlatform.h"
#include "Tune.h"
#include "lib/Lirvox.h"
#include "lib/LirvoxSettings.h"

namespace lirvox::test {

/// Samples of a capture of 5 s.
constexpr std::size_t kLimit = 55125;

/// The shared controller with a delegate, a store and a scripted input, in virtual time. Each test
/// leaves the controller idle and unset.
struct ControllerTest : testing::Test {
  using Calls = std::vector<RecordedDelegate::Call>;

  ControllerTest();
  ~ControllerTest() override;

  /// Installs a database in which track 7 holds `song_`, 2000 frames from its start, and
  /// track 8 `other_`, 3000 frames from its start.
  void install();
  /// Starts a capture, which must succeed.
  void start();
  /// Delivers samples as the microphone does.
  void deliver(const std::int32_t* words, std::size_t count);
  void deliver(const std::vector<std::int32_t>& words) { deliver(words.data(), words.size()); }
  /// What the delegate is told once the capture that runs hears this, too.
  Calls outcomeAfter(const std::vector<std::int32_t>& words);
  /// What the delegate is told of a capture that hears just this.
  Calls outcomeOf(const std::vector<std::int32_t>& words);
  /// Cancels what runs.
  void cancel();
  /// Bundles a recording of the beginning of `song_`.
  void bundleRecording(std::size_t bytes) const;
  /// "start " and "stop " for every time the input was told so.
  std::string unitLog() const;
  /// Runs tasks up to the one that ends the capture.
  void runUntilLimit();

  /// Number of samples in a copy of a capture.
  static std::size_t samplesOf(const std::optional<std::vector<std::byte>>& bytes) {
    return bytes ? bytes->size() / 4 : 0;
  }

  TestPlatform platform_;
  /// Where the installed database is.
  const std::string databasePath_ = LirvoxSettings::databasePath();
  /// What the input is told; it delivers nothing by itself.
  const std::shared_ptr<AudioScript> script_ = std::make_shared<AudioScript>();
  const std::vector<std::int32_t> song_ = makeTune(1, 5.0);
  const std::vector<std::int32_t> other_ = makeTune(2, 5.0);
  const std::shared_ptr<Lirvox> lirvox_ = Lirvox::sharedInstance();
  const std::shared_ptr<RecordedDelegate> delegate_ = std::make_shared<RecordedDelegate>();
  /// What the delegate hears of them when no virtual time has passed.
  const RecordedDelegate::Call foundSong_{7, 46.4399109F, 46.4399109F};
  const RecordedDelegate::Call foundOther_{8, 69.6598663F, 69.6598663F};
};

}  // namespace lirvox::test
