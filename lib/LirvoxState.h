// What the recognizer holds.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "Capture.h"
#include "Lirvox.h"
#include "PassQueue.h"
#include "platform/HttpSession.h"

namespace lirvox {

/// Whether this process was forked from one that had a recognizer, which is then logged: it
/// has neither its threads nor its sound, and locks may be held for ever.
bool refusesForkedChild();

struct Lirvox::State {
  // Plain values, each safe by itself.
  std::atomic<bool> isRecording{false};
  std::atomic<bool> stopNow{false};
  std::atomic<bool> shouldStop{false};
  std::atomic<std::int32_t> minimumFindedCnt{0};
  std::atomic<std::uint32_t> bufferSizeMax{0};
  std::atomic<std::uint32_t> bufferSizeEnoughForMiniSpectogram{0};
  std::atomic<double> recordingTime{0.0};

  // Held while a capture starts or ends; the audio thread never takes it.
  std::mutex control;
  CaptureSlot capture;  // replaced under control only

  mutable std::mutex fields;  // held for a copy or a swap; guards what follows
  std::shared_ptr<LirvoxDelegate> delegate;
  std::shared_ptr<LirvoxDatabase> database;
  std::shared_ptr<LirvoxMicrophone> microphone;
  std::shared_ptr<LirvoxAudioFFT> fft;
  std::shared_ptr<HistoryInfo> historyInfo;
  std::optional<platform::Clock::Date> timeStartListening;
  std::shared_ptr<platform::HttpSession> session;
  std::string userApiKey;
  std::string databasePath;

  // Constant after construction.
  std::shared_ptr<PassQueue> passes;

  template <typename Value>
  Value read(const Value& field) const {
    const std::lock_guard lock(fields);
    return field;
  }

  // The old value is destroyed after the lock is released: its destructor is the host's.
  template <typename Value>
  void write(Value& field, Value value) {
    const std::lock_guard lock(fields);
    std::swap(field, value);
  }
};

}  // namespace lirvox
