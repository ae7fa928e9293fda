// Recognition of samples from memory, through the recognizer and its delegate.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace lirvox::tools {

/// What the delegate was told.
struct Answer {
  bool recognized = false;
  std::int32_t trackId = 0;
  float positionInSeconds = 0.0F;  ///< in the track, at the start of the samples
};

/// Runs one capture after the other on the process's recognizer. Installs a platform
/// of its own, so one at a time, and before anything else uses the library.
class FileRecognizer {
 public:
  using Samples = std::shared_ptr<const std::vector<std::int32_t>>;

  /// Looks things up in the database at `path`.
  FileRecognizer(const std::string& path, std::int32_t minimumVotes);

  /// Plays the samples (32-bit words, mono, 11025 Hz; at least one) to the recognizer
  /// and waits for its answer.
  Answer recognize(Samples samples);

 private:
  const std::shared_ptr<Samples> playing_;
};

}  // namespace lirvox::tools
