// The recognizer's fixed numbers.
#pragma once

#include <cstdint>
#include <string>

#include "LirvoxExport.h"

namespace lirvox {

/// Every tuning value of the recognizer, asked for at the moment of use.
///
/// No operation fails, keeps state or depends on an earlier call; all may be
/// called from any thread. Values that happen to be equal (`settingNFFT` and
/// `settingChunkSize`, `settingSampleRate` and `sampleRate`) are constants of
/// their own: changing one must not change the other.
class LIRVOX_EXPORT LirvoxSettings {
 public:
  LirvoxSettings() = delete;

  /// FFT length of one spectrogram column, in samples.
  static std::int32_t settingNFFT();
  /// Length of one analysis chunk, in samples.
  static std::int32_t settingChunkSize();
  /// Hop between successive spectrogram columns, in samples.
  static std::int32_t settingNHop();
  /// Number of shifted spectrograms of one capture.
  static std::int32_t settingSHIFTS();
  /// Number of frequency bins of one column: half of `settingNFFT`, plus 1.
  static std::int32_t settingNumFreqs();
  /// Sample rate of the analysed signal, in Hz.
  static std::int32_t settingSampleRate();
  /// Default length of one capture, in seconds.
  static double recordTime();
  /// Samples of one block, the unit in which a capture is analysed.
  static std::int32_t minimumBufferSizeForMiniSpectogram();
  /// Base URL of the recognition service, without a trailing slash. A setting of
  /// the build (`LIRVOX_API_URL`); an environment variable of that name replaces it.
  static std::string apiUrl();
  /// The folder in the service's archives that has the name of its host, one path
  /// component. Set as `LIRVOX_SERVICE_HOST_FOLDER`, like `apiUrl`.
  static std::string serviceHostFolder();
  /// Path of the fingerprint database: "lirvox/db1.sqlite" in the caches
  /// directory. Neither the folder nor the file need exist.
  static std::string databasePath();
  /// Sample rate asked of the microphone, in Hz.
  static std::int32_t sampleRate();
  /// Default of the vote count that a result must exceed.
  static std::int32_t minimumFindedCntDefault();
  /// Whether the fingerprint store logs its statements and their errors.
  static bool traceExecutionQuery();
};

}  // namespace lirvox
