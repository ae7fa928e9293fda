// Changes of tracks that are in a catalogue already.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "catalog/TrackList.h"

namespace lirvox::catalog {

/// What becomes of a track's names; what is not given stays.
struct NewNames {
  std::optional<std::string> title;
  std::optional<std::string> artist;
  std::optional<std::string> path;  ///< absolute; tells whether a file was indexed already
};

/// Removes tracks from the catalogue at `path`, all or none: it is an error if one is no
/// longer there as `listTracks` found it. Throws `CatalogError`.
void removeTracks(const std::string& path, const std::vector<ListedTrack>& tracks);

/// Gives a track of the catalogue at `path` other names. It is an error if it is no longer
/// there, or if another track has the path. Throws `CatalogError`.
void renameTrack(const std::string& path, const ListedTrack& track, const NewNames& names);

}  // namespace lirvox::catalog
