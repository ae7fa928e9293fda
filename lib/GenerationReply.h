// The service's answer to the question for its current database.
#pragma once

#include <optional>
#include <string>

namespace lirvox {

/// A good answer.
struct GenerationReply {
  /// Names the database; compared, never read.
  std::string dt;
  /// Where its archive is; none if the answer lacks it.
  std::optional<std::string> url;

  /// Reads "Result", "dt" and "url" of a JSON object. Nothing if `body` is no such
  /// object, longer than any real answer, its result is not "OK", or the stamp is no
  /// string.
  static std::optional<GenerationReply> parse(const std::string& body);
};

}  // namespace lirvox
