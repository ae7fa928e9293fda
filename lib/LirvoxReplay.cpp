// Recordings of captures: keeping one, and recognising one again.
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "lib/Lirvox.h"
#include "lib/LirvoxState.h"
#include "lib/platform/Platform.h"
#include "lib/platform/RunTask.h"
#include "lib/platform/TemporaryFile.h"

namespace lirvox {
namespace {

constexpr const char* kRecordingName = "soundLirvox.dat";
constexpr std::chrono::seconds kReplayTime{4};
constexpr std::chrono::seconds kPauseBeforeLive{2};

// The file; nothing when there is none.
std::vector<std::byte> readFile(const std::string& path) {
  std::error_code error;
  const std::string content = platform::readWholeFile(path, error);
  const auto* const bytes = reinterpret_cast<const std::byte*>(content.data());
  return {bytes, bytes + content.size()};
}

}  // namespace

void Lirvox::startRecognizeFromFile() {
  if (refusesForkedChild()) return;
  const platform::MutexLock lock(state_->capture.control);
  // Unlike a live start, this neither asks whether a capture runs or a database is there,
  // nor takes back an earlier cancellation, nor notes the time. That is meant.
  const bool started = state_->tryToStart([this]() LIRVOX_REQUIRES(state_->capture.control) {
    const auto platform = platform::current();
    const std::string folder = platform->directories->resourcesDirectory();
    state_->beginCapture(weak_from_this(), readFile(folder + '/' + kRecordingName), nullptr);
    state_->processBuffer();
    platform->mainQueue->after(
        kReplayTime, [weak = weak_from_this(), ended = std::weak_ptr(state_->capture.get())] {
          const auto self = weak.lock();
          if (!self) return;
          self->endReplay(ended);
          platform::current()->mainQueue->after(kPauseBeforeLive, [weak] {
            if (const auto again = weak.lock()) again->startRecognize();
          });
        });
  });
  if (!started && !stopNow()) answerNothing();
}

// The replay's time is over, unless another capture has taken its place.
void Lirvox::endReplay(const std::weak_ptr<Capture>& ended) {
  const platform::MutexLock lock(state_->capture.control);
  const auto capture = ended.lock();
  if (!capture || capture != state_->capture.get()) return;
  state_->isRecording = false;
  capture->end();
}

void Lirvox::saveCurrentBufferToFile() const {
  // Whether it succeeds is not asked: meant.
  platform::runLogged([this] {
    const auto recording = bufferAudioData();
    if (!recording) return;
    const std::string folder = platform::current()->directories->cachesDirectory();
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    platform::removeAbandonedFiles(folder);
    platform::writeWholeFile(folder + '/' + kRecordingName,
                             {reinterpret_cast<const char*>(recording->data()), recording->size()});
  });
}

}  // namespace lirvox
