// What the tracks of a database are called.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace lirvox::tools {

/// The titles of a database.
class Titles {
 public:
  /// Of no database: every track is called by its number.
  Titles() = default;
  /// Of the one at `path`. Throws `CatalogError`.
  explicit Titles(const std::string& path);

  /// The title of a track, with its artist if known; "track 7" for one without.
  std::string of(std::int32_t trackId) const;

 private:
  std::map<std::int32_t, std::string> titles_;
};

}  // namespace lirvox::tools
