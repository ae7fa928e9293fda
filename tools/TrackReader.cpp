// Files to fingerprinted tracks, several at a time.
#include "tools/TrackReader.h"

#include <filesystem>
#include <utility>

#include "catalog/CatalogError.h"
#include "catalog/TrackFingerprinter.h"
#include "lib/LirvoxSettings.h"
#include "tools/AudioDecoder.h"

namespace lirvox::tools {
namespace {

// Thrown in the middle of a track that is not waited for.
struct Abandoned {};

ReadTrack read(const ListedFile& file, catalog::TrackFingerprinter& fingerprinter,
               const std::function<void()>& checkpoint) {
  ReadTrack result{&file, ReadTrack::State::failed, {}, {}};
  try {
    const AudioTags tags = readAudio(file.path, [&](const std::int32_t* words, std::size_t count) {
      checkpoint();
      fingerprinter.add(words, count);
      return true;
    });
    const double seconds =
        static_cast<double>(fingerprinter.sampleCount()) / LirvoxSettings::settingSampleRate();
    const std::string name = std::filesystem::path(file.path).stem().string();
    result.track = {
        {tags.title.empty() ? name : tags.title, tags.artist, file.path, seconds}, file.stamp, {}};
    result.track.rows = fingerprinter.finish();
    result.state = ReadTrack::State::read;
  } catch (const AudioError& error) {
    result.reason = error.what();
    if (error.kind() == AudioError::Kind::noAudio) result.state = ReadTrack::State::noAudio;
  } catch (const catalog::CatalogError& error) {
    result.reason = error.what();
  }
  fingerprinter.clear();
  return result;
}

}  // namespace

std::atomic<bool> TrackReader::interrupted{false};

TrackReader::TrackReader(const std::vector<ListedFile>& files, const catalog::RowRule& rule,
                         unsigned threads)
    : files_(files), capacity_(2 * threads), working_(threads) {
  for (unsigned i = 0; i < threads; ++i) threads_.emplace_back([this, rule] { work(rule); });
}

TrackReader::~TrackReader() {
  dropped_ = true;
  {
    const platform::MutexLock lock(mutex_);
    changed_.notifyAll();
  }
  for (std::thread& thread : threads_) thread.join();
}

std::optional<ReadTrack> TrackReader::next() {
  const platform::MutexLock lock(mutex_);
  while (done_.empty() && working_ > 0) changed_.wait(mutex_);
  if (done_.empty()) return std::nullopt;
  ReadTrack track = std::move(done_.front());
  done_.pop_front();
  changed_.notifyAll();
  return track;
}

void TrackReader::work(const catalog::RowRule& rule) {
  const auto checkpoint = [this] {
    if (dropped_ || interrupted) throw Abandoned();
  };
  try {
    catalog::TrackFingerprinter fingerprinter(rule, catalog::TrackFingerprinter::kSamplesInMemory,
                                              checkpoint);
    while (const ListedFile* const file = claim()) deliver(read(*file, fingerprinter, checkpoint));
  } catch (const Abandoned&) {
    // What this thread has delivered before stays good.
  }
  const platform::MutexLock lock(mutex_);
  --working_;
  changed_.notifyAll();
}

const ListedFile* TrackReader::claim() {
  const std::size_t index = claimed_.fetch_add(1);
  return index < files_.size() && !dropped_ && !interrupted ? &files_[index] : nullptr;
}

void TrackReader::deliver(ReadTrack track) {
  const platform::MutexLock lock(mutex_);
  while (done_.size() >= capacity_ && !dropped_) changed_.wait(mutex_);
  done_.push_back(std::move(track));
  changed_.notifyAll();
}

}  // namespace lirvox::tools
