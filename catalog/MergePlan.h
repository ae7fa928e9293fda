// Which tracks a merged catalogue has, and under which ids.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include <SQLiteCpp/SQLiteCpp.h>

#include "catalog/Catalog.h"

namespace lirvox::catalog {

/// Takes the tracks of one part after another and gives them their ids.
class MergePlan {
 public:
  struct Track {
    TrackInfo info;
    FileStamp stamp;
    std::size_t part;
    std::int32_t idInPart;
  };

  /// With `replace`, a later part's file of a path takes an earlier one's place; without,
  /// that is an error.
  explicit MergePlan(bool replace) : replace_(replace) {}

  /// Adds the tracks of the part that comes next; `path` is for messages.
  void add(SQLite::Database& part, const std::string& path);

  /// The tracks by their new ids.
  const std::map<std::int32_t, Track>& tracks() const { return tracks_; }
  /// The new id of a part's track, or 0 if its rows are not taken.
  std::int32_t newId(std::size_t part, std::int32_t idInPart) const;

  /// The largest id that was ever given, and whether its track is gone.
  std::int32_t largestId() const { return largest_; }
  bool largestIdIsGone() const { return tracks_.empty() || tracks_.rbegin()->first < largest_; }
  std::int64_t same() const { return same_; }
  std::int64_t replaced() const { return replaced_; }

 private:
  void place(Track track, const std::string& part);
  void enter(std::int32_t id, Track track);

  const bool replace_;
  std::map<std::int32_t, Track> tracks_;
  std::unordered_map<std::string, std::int32_t> byPath_;
  std::vector<std::unordered_map<std::int32_t, std::int32_t>> newIds_;  // by part
  std::int32_t largest_ = 0;
  std::int64_t same_ = 0;
  std::int64_t replaced_ = 0;
};

}  // namespace lirvox::catalog
