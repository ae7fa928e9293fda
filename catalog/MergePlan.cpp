// Which tracks a merged catalogue has, and under which ids.
#include "catalog/MergePlan.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "catalog/CatalogFile.h"

namespace lirvox::catalog {
namespace {

constexpr const char* kTracks = R"(
  SELECT tracks.track_id, title, artist, tracks.path, duration,
         coalesce(size, -1), coalesce(modified, -1)
  FROM tracks LEFT JOIN sources ON sources.path = tracks.path ORDER BY tracks.track_id)";

std::int32_t largestIdOf(SQLite::Database& part) {
  return part
      .execAndGet(std::string("SELECT max(coalesce((SELECT max(track_id) FROM tracks), 0), "
                              "coalesce((SELECT value FROM config WHERE key = '") +
                  kLargestIdNote + "'), 0))")
      .getInt();
}

bool isSameFile(const FileStamp& a, const FileStamp& b) {
  return a.size == b.size && a.modified == b.modified;
}

}  // namespace

void MergePlan::add(SQLite::Database& part, const std::string& path) {
  const std::size_t number = newIds_.size();
  newIds_.emplace_back();
  SQLite::Statement query(part, kTracks);
  while (query.executeStep()) {
    place({{query.getColumn(1).getString(), query.getColumn(2).getString(),
            query.getColumn(3).getString(), query.getColumn(4).getDouble()},
           {query.getColumn(5).getInt64(), query.getColumn(6).getInt64()},
           number,
           query.getColumn(0).getInt()},
          path);
  }
  if (number == 0) largest_ = largestIdOf(part);
}

void MergePlan::place(Track track, const std::string& part) {
  const auto known = byPath_.find(track.info.path);
  if (known == byPath_.end()) {
    if (largest_ == std::numeric_limits<std::int32_t>::max()) {
      throw CatalogError(part + ": there are more tracks than ids");
    }
    const std::int32_t id = track.part == 0 ? track.idInPart : ++largest_;
    byPath_[track.info.path] = id;
    return enter(id, std::move(track));
  }
  const std::int32_t id = known->second;
  const Track& old = tracks_.at(id);
  if (isSameFile(old.stamp, track.stamp)) {
    ++same_;
    return;
  }
  if (!replace_) {
    throw CatalogError(part + ": an earlier part has another file of the path " + track.info.path +
                       " (--replace takes the later one)");
  }
  ++replaced_;
  newIds_[old.part].erase(old.idInPart);
  enter(id, std::move(track));
}

void MergePlan::enter(std::int32_t id, Track track) {
  newIds_[track.part][track.idInPart] = id;
  tracks_[id] = std::move(track);
}

std::int32_t MergePlan::newId(std::size_t part, std::int32_t idInPart) const {
  const auto id = newIds_[part].find(idInPart);
  return id == newIds_[part].end() ? 0 : id->second;
}

}  // namespace lirvox::catalog
