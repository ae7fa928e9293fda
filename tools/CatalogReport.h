// What the program says of tracks and catalogues.
#pragma once

#include <string>
#include <vector>

#include "catalog/Duplicates.h"
#include "catalog/Merge.h"
#include "catalog/TrackList.h"
#include "catalog/Verify.h"

namespace lirvox::tools {

/// Writes to the standard output stream: text for people, a JSON object a line, or (tracks
/// only) CSV with a line of names.
class CatalogReport {
 public:
  explicit CatalogReport(const std::string& format) : format_(format) {}

  void tracks(const std::vector<catalog::ListedTrack>& tracks) const;
  /// Only as JSON, and without the numbers of rows, which nobody has counted.
  void changed(const std::vector<catalog::ListedTrack>& tracks) const;
  void merged(const catalog::Merged& merged, std::size_t parts, const std::string& output) const;
  void verified(const catalog::Verification& verification, const std::string& database) const;
  /// `tracks` are all of the database, in the order of their ids.
  void duplicates(const std::vector<catalog::Duplicate>& duplicates,
                  const std::vector<catalog::ListedTrack>& tracks) const;

  /// A line for each track, for a person to look over.
  static std::string lines(const std::vector<catalog::ListedTrack>& tracks);

 private:
  bool json() const { return format_ == "json"; }

  const std::string format_;
};

}  // namespace lirvox::tools
