// Power spectrogram to peaks, stage by stage.
#pragma once

#include <vector>

#include "Landmark.h"
#include "Spectrogram.h"

namespace lirvox {

// Each stage can be called alone, on the spectrogram of any one shift. The constants
// of the stages are part of the fingerprint format.

/// Scales powers to a one-sided power spectral density (Welch, 1967), in place.
void scaleToDensity(Spectrogram& specgram);

/// Replaces values by their natural logarithm, none smaller than that of a millionth
/// of the largest, and subtracts the mean of all. Of silence (no value above 0) no
/// logarithm is taken.
void takeLogarithm(Spectrogram& specgram);

/// Filters bins [0, 256) along time with `lfilter`; bin 256 stays as it is.
void highPass(Spectrogram& specgram);

/// The peaks of a filtered spectrogram, at most 5 per frame, ordered by frame, then
/// bin: local maxima across frequency above a threshold that decays from frame to
/// frame and that each peak lifts around itself (after Ellis, "Robust
/// landmark-based audio fingerprinting", 2009).
std::vector<Peak> pickPeaks(const Spectrogram& filtered);

/// A peak and how far it stood above the threshold when it was accepted.
struct PickedPeak {
  Peak peak;
  double strength;
};

/// `pickPeaks`, with strengths.
std::vector<PickedPeak> pickPeaksWithStrength(const Spectrogram& filtered);

/// The peaks alone.
std::vector<Peak> withoutStrengths(const std::vector<PickedPeak>& picked);

/// All stages in a row, in the memory of `power`, whose values are lost.
std::vector<PickedPeak> findPeaksWithStrength(Spectrogram&& power);

/// All stages in a row. Scales `power` to a density, as `scaleToDensity` does, and
/// leaves it otherwise as it is.
std::vector<Peak> findPeaks(Spectrogram& power);

}  // namespace lirvox
