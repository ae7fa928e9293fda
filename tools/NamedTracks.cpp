// The tracks that a command line means.
#include "tools/NamedTracks.h"

#include "tools/Console.h"

namespace lirvox::tools {

const char* const kTrackHelp =
    "TRACK is an id, or a whole title, \"ARTIST - TITLE\" or path, of either case; * stands for\n"
    "anything in it, ? for one character.";

std::vector<catalog::ListedTrack> findTracks(const std::string& database,
                                             const std::vector<std::string>& patterns) {
  const std::vector<catalog::ListedTrack> all = catalog::listTracks(database);
  std::vector<bool> wanted(all.size());
  bool complete = true;
  for (const std::string& text : patterns) {
    const catalog::TrackPattern pattern(text);
    bool found = false;
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (!pattern.matches(all[i])) continue;
      found = wanted[i] = true;
    }
    if (!found) complain(text + ": no such track");
    complete = complete && found;
  }
  std::vector<catalog::ListedTrack> tracks;
  for (std::size_t i = 0; complete && i < all.size(); ++i) {
    if (wanted[i]) tracks.push_back(all[i]);
  }
  return tracks;
}

}  // namespace lirvox::tools
