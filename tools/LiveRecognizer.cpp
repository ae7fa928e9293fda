// Recognition of what an input hears, through the recognizer and its delegate.
#include "tools/LiveRecognizer.h"

#include <utility>

#include "catalog/CatalogError.h"
#include "lib/Lirvox.h"
#include "lib/LirvoxDatabase.h"
#include "lib/LirvoxSettings.h"
#include "lib/platform/Mutex.h"
#include "lib/platform/TemporaryFile.h"
#include "tools/ForgivingUnit.h"
#include "tools/Inputs.h"
#include "tools/Wakeup.h"

namespace lirvox::tools {

// Called on the main queue.
class LiveRecognizer::Listener : public LirvoxDelegate, public platform::AudioSessionObserver {
 public:
  void didRecognize(std::int32_t trackId, float absoluteTimeOffset,
                    float relativeTimeOffset) override {
    add({true, trackId, absoluteTimeOffset, relativeTimeOffset});
  }
  void didNotRecognize() override { add({}); }

  void audioSessionWasInterrupted(const platform::AudioSessionInterruption&) override {
    audioSessionRouteChanged();
  }
  void audioSessionRouteChanged() override {
    inputChanged_ = true;
    wake();
  }

  std::optional<Answer> takeAnswer() {
    const platform::MutexLock lock(mutex_);
    return std::exchange(answer_, std::nullopt);
  }
  bool takeInputChange() { return inputChanged_.exchange(false); }

 private:
  void add(const Answer& answer) {
    {
      const platform::MutexLock lock(mutex_);
      answer_ = answer;
    }
    wake();
  }

  platform::Mutex mutex_;
  std::optional<Answer> answer_ LIRVOX_GUARDED_BY(mutex_);
  std::atomic<bool> inputChanged_{false};
};

LiveRecognizer::LiveRecognizer(const Options& options)
    : options_(options), installed_(options.database), listener_(std::make_shared<Listener>()) {
  platform::Platform platform = platformWithSource(options.source);
  platform.directories = installed_.directories();
  if (const auto makeUnit = platform.makeInputUnit) {
    // The recognizer stops the input first and lets go of the samples after, so this is
    // when a capture is whole.
    const auto stopped = [saves = options.savesCaptures] {
      if (saves) Lirvox::sharedInstance()->saveCurrentBufferToFile();
    };
    platform.makeInputUnit =
        [makeUnit, stopped, level = level_,
         failed = failed_](platform::AudioStatus& status) -> std::unique_ptr<platform::AudioUnit> {
      auto unit = makeUnit(status);
      if (!unit) return unit;
      return std::make_unique<ForgivingUnit>(std::move(unit), level, failed, stopped);
    };
  }
  platform::install(std::move(platform));
  platform_ = platform::current();
}

LiveRecognizer::~LiveRecognizer() {
  platform_->audioSession->removeObserver(listener_.get());
}

std::string LiveRecognizer::whyNoInput() const {
  return tools::whyNoInput(*platform_, options_.source);
}

std::optional<platform::AudioSessionPort> LiveRecognizer::input() const {
  const auto route = platform_->audioSession->currentRoute();
  if (route.inputs.empty()) return std::nullopt;
  return route.inputs.front();
}

void LiveRecognizer::start() {
  const auto lirvox = Lirvox::sharedInstance();
  if (lirvox->delegate() != listener_) {
    lirvox->setDatabase(std::make_shared<LirvoxDatabase>(LirvoxSettings::databasePath()));
    lirvox->setMinimumFindedCnt(options_.minimumVotes);
    lirvox->setRecordingTime(options_.seconds);
    lirvox->setDelegate(listener_);
    platform_->audioSession->addObserver(listener_);
  }
  LirvoxError error;
  // A start without a database file would be silent, and the wait without end.
  if (!lirvox->canRecognize(error)) throw catalog::CatalogError(error.localizedDescription);
  listener_->takeAnswer();
  lirvox->startRecognize();
}

void LiveRecognizer::stop() {
  Lirvox::sharedInstance()->stopRecognize();
}

std::optional<Answer> LiveRecognizer::takeAnswer() {
  return listener_->takeAnswer();
}

bool LiveRecognizer::takeInputChange() {
  return listener_->takeInputChange();
}

std::error_code LiveRecognizer::saveTo(const std::string& path) const {
  return platform::copyWholeFile(installed_.recordingPath(), path);
}

}  // namespace lirvox::tools
