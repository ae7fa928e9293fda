// The analysis of one capture, from its first block to its lookup.
#pragma once

#include <cstddef>
#include <memory>

#include "Capture.h"
#include "HistoryInfo.h"
#include "LirvoxAudioFFT.h"

namespace lirvox {

/// How a call of `ProcessingPass::run` ended.
enum class PassState {
  waiting,    ///< every complete block is analysed and the capture goes on
  captured,   ///< the capture is over and analysed: a lookup is due
  cancelled,  ///< the capture was dropped
  failed,     ///< memory ran out; what was heard is lost
};

/// Takes the blocks of a capture as they become complete. Used by one thread at a time.
class ProcessingPass {
 public:
  /// `fft` and `historyInfo` are the pass's own from its first `run` to its last.
  ProcessingPass(std::shared_ptr<Capture> capture, std::shared_ptr<LirvoxAudioFFT> fft,
                 std::shared_ptr<HistoryInfo> historyInfo);

  /// Analyses the complete blocks there are. Never waits: while the result is
  /// `waiting`, call again when the capture's progress waker says so.
  PassState run();

  const std::shared_ptr<Capture>& capture() const { return capture_; }
  HistoryInfo& historyInfo() const { return *historyInfo_; }

 private:
  void analyseBlock();

  const std::shared_ptr<Capture> capture_;
  const std::shared_ptr<LirvoxAudioFFT> fft_;
  const std::shared_ptr<HistoryInfo> historyInfo_;
};

/// Turns 32-bit samples of the capture format into floats, exact to the bit: each is
/// rounded to single precision and scaled by 1/32768. (The words hold more than 16
/// bits, so full scale is not 1.0; what follows is blind to scale.)
void convertSamples(const std::int32_t* words, std::size_t count, float* samples);

}  // namespace lirvox
