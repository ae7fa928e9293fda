// Power spectrogram to peaks, stage by stage.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Landmark.h"
#include "PeakPicker.h"
#include "Spectrogram.h"

namespace lirvox {

// Each stage can be called alone, on the spectrogram of any one shift. The constants
// of the stages are part of the fingerprint format.

/// Frames that one stage should hand to the next while they are in the processor's cache.
/// Sums over a spectrogram are sums over parts of this length, so that they do not depend
/// on how much of it is held in memory.
inline constexpr std::int32_t kFramesAtOnce = 32;

/// Scales powers to a one-sided power spectral density (Welch, 1967), in place. Returns
/// the largest value, at least 0.
double scaleToDensity(Spectrogram& specgram);
/// The same for `count` frames of 257 values, one after the other.
double scaleToDensity(double* frames, std::size_t count);

/// Replaces values by their natural logarithm, none smaller than that of a millionth
/// of the largest, and subtracts the mean of all. Of silence (no value above 0) no
/// logarithm is taken.
void takeLogarithm(Spectrogram& specgram);
/// The same for `count` frames of a spectrogram whose largest value is given, above 0.
/// Subtracts nothing and returns the sum.
double takeLogarithmsOfFrames(double* frames, std::size_t count, double largest);

/// Filters bins [0, 256) along time with `lfilter`; bin 256 stays as it is.
void highPass(Spectrogram& specgram);

/// The peaks of a filtered spectrogram, at most 5 per frame, ordered by frame, then
/// bin: local maxima across frequency above a threshold that decays from frame to
/// frame and that each peak lifts around itself (after Ellis, "Robust
/// landmark-based audio fingerprinting", 2009).
std::vector<Peak> pickPeaks(const Spectrogram& filtered);

/// The peaks alone.
std::vector<Peak> withoutStrengths(const std::vector<PickedPeak>& picked);

/// All stages in a row. Scales `power` to a density, as `scaleToDensity` does, and
/// leaves it otherwise as it is.
std::vector<Peak> findPeaks(Spectrogram& power);

}  // namespace lirvox
