// The audio converter: from one stream format to another, by pulling.
#pragma once

#include <cstdint>

#include "../LirvoxExport.h"
#include "AudioTypes.h"

namespace lirvox::platform {

/// Converts one stream. Keeps the state of the stream between calls, so a stream
/// converted in pieces equals the stream converted at once.
///
/// Threads: one at a time. `fillComplexBuffer` allocates nothing, locks nothing
/// and does not log: all memory is taken when the converter is made.
class LIRVOX_EXPORT AudioConverter {
 public:
  /// Asked for input. `packetCount` holds how many packets are wanted and may be
  /// lowered; 0 says that the stream has ended. `request` has the input format's
  /// number of buffers and is to be filled with records that point to the
  /// samples, which stay valid until the next request or the end of the fill. Of
  /// these the converter takes the lesser of `packetCount` and what
  /// `dataByteSize` holds, and asks again for what it lacks. Any result but 0
  /// ends the fill, which then returns it.
  using InputDataCallback = AudioStatus (*)(AudioConverter& converter, std::uint32_t& packetCount,
                                            AudioBufferList& request,
                                            AudioStreamPacketDescription** packetDescriptions,
                                            void* userData);

  virtual ~AudioConverter() = default;

  /// Fills `output` with up to `packetCount` packets, bounded by the
  /// `dataByteSize` of its buffers; `packetCount` and `dataByteSize` then say how
  /// much it was. `packetDescriptions` is for output formats whose packets vary
  /// in size and may be null.
  virtual AudioStatus fillComplexBuffer(InputDataCallback inputData, void* userData,
                                        std::uint32_t& packetCount, AudioBufferList& output,
                                        AudioStreamPacketDescription* packetDescriptions) = 0;

  /// The largest packet that the converter can put out, in bytes (property "xops").
  virtual AudioStatus maximumOutputPacketSize(std::uint32_t& bytes) = 0;
};

}  // namespace lirvox::platform
