// The tracks that a command line means.
#pragma once

#include <string>
#include <vector>

#include "catalog/TrackList.h"

namespace lirvox::tools {

/// What the help of a command says of its TRACK.
extern const char* const kTrackHelp;

/// The tracks of `database` that any of `patterns` matches, each once, in the order of
/// their ids. None when a pattern matches none, of which it complains. Throws
/// `CatalogError`.
std::vector<catalog::ListedTrack> findTracks(const std::string& database,
                                             const std::vector<std::string>& patterns);

}  // namespace lirvox::tools
