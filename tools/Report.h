// Answers as the program prints them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/Answer.h"
#include "tools/Titles.h"

namespace lirvox::tools {

/// Writes to the standard output stream, a line for each answer: text for people, or a
/// JSON object.
class Report {
 public:
  /// Titles are those of the database at `path`. Throws `CatalogError`.
  Report(const std::string& path, const std::string& format);

  /// The answer for a file, with its votes where they are known.
  void file(const std::string& file, const Answer& answer,
            std::optional<std::int32_t> votes = std::nullopt) const;
  /// A file that could not be read; people are told on the standard error stream.
  void failure(const std::string& file, const std::string& reason,
               std::optional<std::int32_t> votes = std::nullopt) const;
  /// The answer for what was heard.
  void heard(const Answer& answer) const;

 private:
  const Titles titles_;
  const bool json_;
};

}  // namespace lirvox::tools
