// What the recognizer holds.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Capture.h"
#include "Lirvox.h"
#include "PassQueue.h"
#include "platform/HttpSession.h"
#include "platform/Mutex.h"

namespace lirvox {

/// Whether this process was forked from one that had a recognizer, which is then logged: it
/// has neither its threads nor its sound, and locks may be held for ever.
bool refusesForkedChild();

struct LIRVOX_HIDDEN Lirvox::State {
  // Plain values, each safe by itself.
  std::atomic<bool> isRecording{false};
  std::atomic<bool> stopNow{false};
  std::atomic<bool> shouldStop{false};
  std::atomic<std::int32_t> minimumFindedCnt{0};
  std::atomic<std::uint32_t> bufferSizeMax{0};
  std::atomic<std::uint32_t> bufferSizeEnoughForMiniSpectogram{0};
  std::atomic<double> recordingTime{0.0};

  // Its lock is held while a capture starts or ends.
  CaptureSlot capture;

  // Held for a copy or a swap; nothing is locked under it.
  mutable platform::Mutex fields;
  std::shared_ptr<LirvoxDelegate> delegate LIRVOX_GUARDED_BY(fields);
  std::shared_ptr<LirvoxDatabase> database LIRVOX_GUARDED_BY(fields);
  std::shared_ptr<LirvoxMicrophone> microphone LIRVOX_GUARDED_BY(fields);
  std::shared_ptr<LirvoxAudioFFT> fft LIRVOX_GUARDED_BY(fields);
  std::shared_ptr<HistoryInfo> historyInfo LIRVOX_GUARDED_BY(fields);
  std::optional<platform::Clock::Date> timeStartListening LIRVOX_GUARDED_BY(fields);
  std::shared_ptr<platform::HttpSession> session LIRVOX_GUARDED_BY(fields);
  std::string userApiKey LIRVOX_GUARDED_BY(fields);
  std::string databasePath LIRVOX_GUARDED_BY(fields);

  // Constant after construction.
  std::shared_ptr<PassQueue> passes;

  template <typename Value>
  Value read(Value State::*field) const LIRVOX_EXCLUDES(fields) {
    const platform::MutexLock lock(fields);
    return this->*field;
  }

  // The old value is destroyed after the lock is released: its destructor is the host's.
  template <typename Value>
  void write(Value State::*field, Value value) LIRVOX_EXCLUDES(fields) {
    const platform::MutexLock lock(fields);
    std::swap(this->*field, value);
  }

  /// Begins a capture. What the system refuses (memory, a thread, a descriptor) does not reach
  /// the host: the log says it, what was begun is undone, and false is returned.
  bool tryToStart(const std::function<void()>& begin) LIRVOX_REQUIRES(capture.control);

  /// Makes a fresh capture of `owner`'s, with the samples that a recording holds already, the
  /// current one.
  void beginCapture(const std::weak_ptr<Lirvox>& owner, const std::vector<std::byte>& recording,
                    const LirvoxMicrophone* byMicrophone) LIRVOX_REQUIRES(capture.control);

  /// Lines up the pass of the current capture.
  void processBuffer() LIRVOX_REQUIRES(capture.control);

  /// Stops the microphone and lets the pass work off what there is.
  void stopCapture(Capture& ended) LIRVOX_REQUIRES(capture.control);
};

}  // namespace lirvox
