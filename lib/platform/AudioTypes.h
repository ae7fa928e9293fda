// The values that audio units, sessions and converters exchange.
#pragma once

#include <cstdint>
#include <vector>

namespace lirvox::platform {

/// The outcome of an audio operation: 0, or a code that is often a
/// four-character code and otherwise a plain (usually negative) number.
using AudioStatus = std::int32_t;

/// The number whose big-endian bytes are the four characters of `text`.
constexpr std::uint32_t fourCharacterCode(const char (&text)[5]) {
  std::uint32_t code = 0;
  for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
  return code;
}

/// Success.
constexpr AudioStatus audioNoError = 0;
/// An argument that no implementation could honour.
constexpr AudioStatus audioParameterError = -50;
/// A stream format that this implementation cannot handle.
constexpr auto audioFormatError = static_cast<AudioStatus>(fourCharacterCode("fmt?"));
/// More frames than the buffers hold.
constexpr auto audioTooManyFramesError = static_cast<AudioStatus>(fourCharacterCode("many"));
/// The operation does not fit the state, such as starting what is not initialised.
constexpr auto audioStateError = static_cast<AudioStatus>(fourCharacterCode("stat"));
/// The sound server cannot be reached, or has refused.
constexpr auto audioServerError = static_cast<AudioStatus>(fourCharacterCode("serv"));

/// The one format identifier that is in use.
constexpr std::uint32_t audioFormatLinearPCM = fourCharacterCode("lpcm");

/// Bits of `AudioStreamBasicDescription::formatFlags`.
constexpr std::uint32_t audioFormatFlagIsFloat = 1;
constexpr std::uint32_t audioFormatFlagIsSignedInteger = 4;
constexpr std::uint32_t audioFormatFlagIsPacked = 8;
constexpr std::uint32_t audioFormatFlagIsNonInterleaved = 32;

/// A stream format. Samples are in native byte order. In a non-interleaved
/// format the byte counts are those of one channel.
struct AudioStreamBasicDescription {
  double sampleRate = 0;               ///< Hz
  std::uint32_t formatID = 0;          ///< a four-character code
  std::uint32_t formatFlags = 0;       ///< bits, as above
  std::uint32_t bytesPerPacket = 0;    ///< 0: packets vary in size
  std::uint32_t framesPerPacket = 0;   ///< 1 for linear PCM
  std::uint32_t bytesPerFrame = 0;     ///< of all channels that are interleaved
  std::uint32_t channelsPerFrame = 0;  ///< interleaved or not
  std::uint32_t bitsPerChannel = 0;    ///< of one sample
  std::uint32_t reserved = 0;          ///< always 0
};

/// Field by field.
inline bool operator==(const AudioStreamBasicDescription& a, const AudioStreamBasicDescription& b) {
  return a.sampleRate == b.sampleRate && a.formatID == b.formatID &&
         a.formatFlags == b.formatFlags && a.bytesPerPacket == b.bytesPerPacket &&
         a.framesPerPacket == b.framesPerPacket && a.bytesPerFrame == b.bytesPerFrame &&
         a.channelsPerFrame == b.channelsPerFrame && a.bitsPerChannel == b.bitsPerChannel &&
         a.reserved == b.reserved;
}
/// Whether a field differs.
inline bool operator!=(const AudioStreamBasicDescription& a, const AudioStreamBasicDescription& b) {
  return !(a == b);
}

/// Packed linear PCM in one buffer: signed integers of 16, 24 (in 3 bytes) or 32 bits, or
/// floats of 32 or 64.
inline AudioStreamBasicDescription interleavedPcm(std::uint32_t sampleRateInHz,
                                                  std::uint32_t channels,
                                                  std::uint32_t bitsPerChannel,
                                                  bool isFloat = false) {
  AudioStreamBasicDescription format;
  format.sampleRate = sampleRateInHz;
  format.formatID = audioFormatLinearPCM;
  format.formatFlags =
      audioFormatFlagIsPacked | (isFloat ? audioFormatFlagIsFloat : audioFormatFlagIsSignedInteger);
  format.bytesPerFrame = format.bytesPerPacket = bitsPerChannel / 8 * channels;
  format.framesPerPacket = 1;
  format.channelsPerFrame = channels;
  format.bitsPerChannel = bitsPerChannel;
  return format;
}

/// Samples of one channel, or of several that are interleaved. Says nothing
/// about who owns `data`.
struct AudioBuffer {
  std::uint32_t numberChannels = 0;  ///< that are interleaved in it
  std::uint32_t dataByteSize = 0;    ///< bytes of `data` that are in use
  void* data = nullptr;              ///< the samples
};

/// One buffer when the format is interleaved, else one per channel. Assigning a
/// list copies the records, not the samples; it allocates nothing when the
/// target's capacity suffices.
struct AudioBufferList {
  std::vector<AudioBuffer> buffers;  ///< in the order of the channels
};

/// Where one packet of a format with packets of varying size lies in its buffer.
struct AudioStreamPacketDescription {
  std::int64_t startOffset = 0;              ///< in bytes
  std::uint32_t variableFramesInPacket = 0;  ///< 0: as many as the format says
  std::uint32_t dataByteSize = 0;            ///< bytes of the packet
};

/// When the first frame of a delivery was captured.
struct AudioTimeStamp {
  double sampleTime = 0;       ///< frames since the unit was last started
  std::uint64_t hostTime = 0;  ///< nanoseconds of the steady clock; 0: unknown
};

}  // namespace lirvox::platform
