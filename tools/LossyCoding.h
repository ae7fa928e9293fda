// Sound that has been through a lossy codec.
#pragma once

#include "tools/Degradation.h"

namespace lirvox::tools {

/// The sound (11025 Hz) after AAC of `bitsPerSecond`, as long and at the same time. Throws
/// `AudioError` when FFmpeg has no such codec.
Sound codedAndDecoded(const Sound& sound, int bitsPerSecond);

}  // namespace lirvox::tools
