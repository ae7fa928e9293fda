// The tracks of a database.
#include "catalog/TrackList.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>
#include <utility>

#include <fnmatch.h>

#include "catalog/DatabaseFile.h"
#include "catalog/HashCounts.h"

namespace lirvox::catalog {
namespace {

// Only * and ? are special: titles are full of brackets.
std::string asGlob(const std::string& text) {
  std::string glob;
  for (const char letter : text) {
    if (letter == '[' || letter == '\\') glob += '\\';
    glob += letter;
  }
  return glob;
}

}  // namespace

std::string fullTitle(const TrackInfo& info) {
  return info.artist.empty() ? info.title : info.artist + " - " + info.title;
}

std::vector<ListedTrack> listTracks(const std::string& path) {
  const auto database = openForReading(path);
  return naming(path, [&] {
    std::vector<ListedTrack> tracks;
    const bool named = database->tableExists("tracks");
    SQLite::Statement query(
        *database, named ? "SELECT track_id, title, artist, path, duration FROM tracks ORDER BY 1"
                         : "SELECT DISTINCT track_id, '', '', '', 0.0 FROM db ORDER BY 1");
    while (query.executeStep()) {
      tracks.push_back({query.getColumn(0).getInt(),
                        {query.getColumn(1).getString(), query.getColumn(2).getString(),
                         query.getColumn(3).getString(), query.getColumn(4).getDouble()}});
    }
    return tracks;
  });
}

void countRows(const std::string& path, std::vector<ListedTrack>& tracks,
               const ProgressHandler& progress) {
  const auto database = openForReading(path);
  std::unordered_map<std::int32_t, ListedTrack*> byId;
  for (ListedTrack& track : tracks) byId[track.id] = &track;
  const auto count = [&](const std::string& table, std::int64_t ListedTrack::*number) {
    SQLite::Statement query(*database, "SELECT track_id, num2 FROM " + table);
    for (std::uint64_t i = 0; query.executeStep(); ++i) {
      const auto track = byId.find(query.getColumn(0).getInt());
      if (track != byId.end()) ++(track->second->*number);
      // Rows of common hashes are few: they hardly count.
      if (i % 65536 == 0 && table == "db") progress(query.getColumn(1).getDouble() / kHashes);
    }
  };
  naming(path, [&] {
    count("db", &ListedTrack::rows);
    if (database->tableExists("held")) count("held", &ListedTrack::heldRows);
  });
}

TrackPattern::TrackPattern(std::string text) : pattern_(asGlob(text)), id_(text) {
  std::error_code ignored;
  if (!text.empty()) path_ = std::filesystem::weakly_canonical(text, ignored);
}

TrackPattern TrackPattern::anywhere(const std::string& text) {
  TrackPattern pattern(text);
  pattern.pattern_ = '*' + pattern.pattern_ + '*';
  return pattern;
}

bool TrackPattern::fits(const std::string& text) const {
  return !pattern_.empty() && ::fnmatch(pattern_.c_str(), text.c_str(), FNM_CASEFOLD) == 0;
}

bool TrackPattern::matches(const ListedTrack& track) const {
  const TrackInfo& info = track.info;
  return id_ == std::to_string(track.id) || (!path_.empty() && path_ == info.path) ||
         fits(info.title) || fits(fullTitle(info)) || fits(info.path);
}

}  // namespace lirvox::catalog
