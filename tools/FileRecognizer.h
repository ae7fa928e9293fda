// Recognition of samples from memory, through the recognizer and its delegate.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tools/Answer.h"
#include "tools/InstalledDatabase.h"

namespace lirvox::tools {

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

  /// Has the recording at `path` recognised as one among the resources of an application
  /// is, which takes 4 seconds, and waits for the answer. The live capture that follows
  /// 2 seconds after hears nothing. Throws `CatalogError` when it cannot be put there.
  Answer replay(const std::string& path);

 private:
  const InstalledDatabase installed_;
  const std::shared_ptr<Samples> playing_;
};

}  // namespace lirvox::tools
