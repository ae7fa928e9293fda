// Sound files of any kind to samples of the capture format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

namespace lirvox::tools {

/// Why a file gives no samples; `what()` does not name the file.
class AudioError : public std::runtime_error {
 public:
  enum class Kind { unreadable, noAudio };

  AudioError(Kind kind, const std::string& reason) : std::runtime_error(reason), kind_(kind) {}
  Kind kind() const { return kind_; }

 private:
  Kind kind_;
};

/// What a file says of itself; empty where it says nothing.
struct AudioTags {
  std::string title;
  std::string artist;
};

/// Takes the next samples: 32-bit words, mono, 11025 Hz. False ends the reading.
using SampleSink = std::function<bool(const std::int32_t* words, std::size_t count)>;

/// Decodes the best audio stream of `path`, whatever FFmpeg's libraries read; "-" is
/// the standard input. Damaged stretches are skipped as players do. Throws `AudioError`.
AudioTags decodeAudio(const std::string& path, const SampleSink& sink);

/// The same for a capture recording: 32-bit native words, no header.
AudioTags readRecording(const std::string& path, const SampleSink& sink);

/// One or the other: a file named *.dat is a recording.
AudioTags readAudio(const std::string& path, const SampleSink& sink);

}  // namespace lirvox::tools
