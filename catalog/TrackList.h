// The tracks of a database.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "catalog/Catalog.h"
#include "catalog/ProgressHandler.h"

namespace lirvox::catalog {

/// A track as a database has it.
struct ListedTrack {
  std::int32_t id = 0;
  TrackInfo info;  ///< empty where the database does not say
  std::int64_t rows = 0;
  std::int64_t heldRows = 0;
};

/// The tracks of the database at `path`, which any program may have made, in the order of
/// their ids; without their numbers of rows. Throws `CatalogError`.
std::vector<ListedTrack> listTracks(const std::string& path);

/// Fills in the numbers of rows, for which all of the file is read.
void countRows(const std::string& path, std::vector<ListedTrack>& tracks,
               const ProgressHandler& progress);

/// Which tracks a person means: an id, or, of either case, a whole title, "ARTIST - TITLE"
/// or path, in which * stands for anything and ? for one character.
class TrackPattern {
 public:
  explicit TrackPattern(std::string text);

  /// Also finds the text within a title or path.
  static TrackPattern anywhere(const std::string& text);

  bool matches(const ListedTrack& track) const;

 private:
  bool fits(const std::string& text) const;

  std::string pattern_;
  std::string id_;
  std::string path_;  // absolute
};

/// "ARTIST - TITLE", or the title alone.
std::string fullTitle(const TrackInfo& info);

}  // namespace lirvox::catalog
