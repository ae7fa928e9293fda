// Files to fingerprinted tracks, several at a time.
#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "catalog/Catalog.h"
#include "lib/platform/Mutex.h"
#include "tools/FileList.h"

namespace lirvox::tools {

/// What became of one file.
struct ReadTrack {
  enum class State { read, failed, noAudio };

  const ListedFile* file = nullptr;
  State state = State::failed;
  catalog::NewTrack track;  ///< when read
  std::string reason;       ///< when not
};

/// Decodes and fingerprints files on threads of its own. At most two finished tracks
/// per thread wait to be taken, which bounds the memory.
class TrackReader {
 public:
  /// Starts at once; `files` must outlive the reader.
  TrackReader(const std::vector<ListedFile>& files, const catalog::RowRule& rule, unsigned threads);
  /// Drops what is under way.
  ~TrackReader();

  TrackReader(const TrackReader&) = delete;
  TrackReader& operator=(const TrackReader&) = delete;

  /// The next file that is done, in any order; waits for it. None after the last, which
  /// comes soon once `interrupted` is true.
  std::optional<ReadTrack> next();

  /// Set by a signal handler: tracks that are not done are given up, those that are done
  /// are still to be taken.
  static std::atomic<bool> interrupted;

 private:
  void work(const catalog::RowRule& rule);
  const ListedFile* claim();
  void deliver(ReadTrack track);

  const std::vector<ListedFile>& files_;
  const std::size_t capacity_;
  std::atomic<std::size_t> claimed_{0};
  std::atomic<bool> dropped_{false};

  platform::Mutex mutex_;
  platform::Condition changed_;
  std::deque<ReadTrack> done_ LIRVOX_GUARDED_BY(mutex_);
  std::size_t working_ LIRVOX_GUARDED_BY(mutex_);  // threads that may still deliver
  std::vector<std::thread> threads_;
};

}  // namespace lirvox::tools
