// The picture of what the recognizer sees in a sound.
#pragma once

#include <cstdint>
#include <optional>

#include "tools/Drawing.h"
#include "tools/Examination.h"

namespace lirvox::tools {

/// A track, and the frame of it at which the excerpt starts.
struct TrackPlace {
  std::int32_t trackId;
  std::int32_t offset;
};

/// Draws the high-passed spectrogram of one shift with its peaks and landmarks, title and
/// legend above `box`, labels beside it. Landmarks that vote for `place` stand out, and the
/// shift is the one that has most of them.
void drawSpectrogram(Drawing& drawing, const Box& box, const Examination& examined,
                     const std::optional<TrackPlace>& place);

}  // namespace lirvox::tools
