// Recognition of samples from memory, through the recognizer and its delegate.
#include "tools/FileRecognizer.h"

#include <filesystem>
#include <future>
#include <utility>

#include "catalog/CatalogError.h"
#include "lib/Lirvox.h"
#include "lib/LirvoxDatabase.h"
#include "lib/LirvoxSettings.h"
#include "lib/platform/MemoryAudioUnit.h"
#include "lib/platform/Platform.h"

namespace lirvox::tools {
namespace {

// Keeps the first call of the delegate.
class Listener : public LirvoxDelegate {
 public:
  void didRecognize(std::int32_t trackId, float absoluteTimeOffset,
                    float relativeTimeOffset) override {
    answer_.set_value({true, trackId, absoluteTimeOffset, relativeTimeOffset});
  }
  void didNotRecognize() override { answer_.set_value({}); }

  Answer wait() { return answer_.get_future().get(); }

 private:
  std::promise<Answer> answer_;
};

}  // namespace

FileRecognizer::FileRecognizer(const std::string& path, std::int32_t minimumVotes)
    : installed_(path), playing_(std::make_shared<Samples>()) {
  platform::Platform platform = *platform::current();
  platform.directories = installed_.directories();
  platform.audioSession = std::make_shared<platform::NullAudioSession>();
  platform.makeInputUnit = [playing = playing_](platform::AudioStatus&) {
    return std::make_unique<platform::MemoryAudioUnit>(*playing);
  };
  platform::install(std::move(platform));
  const auto lirvox = Lirvox::sharedInstance();
  // A process starts without a database object: this is how a host sets one.
  lirvox->setDatabase(std::make_shared<LirvoxDatabase>(LirvoxSettings::databasePath()));
  lirvox->setMinimumFindedCnt(minimumVotes);
}

Answer FileRecognizer::recognize(Samples samples) {
  const auto lirvox = Lirvox::sharedInstance();
  const auto listener = std::make_shared<Listener>();
  // The capture ends with the last sample.
  lirvox->setRecordingTime(static_cast<double>(samples->size()) / LirvoxSettings::sampleRate());
  lirvox->setDelegate(listener);
  *playing_ = std::move(samples);
  LirvoxError error;
  // A start without a database file would be silent, and the wait without end.
  if (!lirvox->canRecognize(error)) throw catalog::CatalogError(error.localizedDescription);
  lirvox->startRecognize();
  const Answer answer = listener->wait();
  lirvox->setDelegate(nullptr);
  return answer;
}

Answer FileRecognizer::replay(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  fs::create_symlink(fs::absolute(path), installed_.recordingPath(), error);
  if (error) throw catalog::CatalogError(installed_.recordingPath() + ": " + error.message());
  const auto lirvox = Lirvox::sharedInstance();
  const auto listener = std::make_shared<Listener>();
  lirvox->setDelegate(listener);
  lirvox->startRecognizeFromFile();
  const Answer answer = listener->wait();
  lirvox->setDelegate(nullptr);
  return answer;
}

}  // namespace lirvox::tools
