// Changes of tracks that are in a catalogue already.
#include "catalog/TrackChanges.h"

#include <unordered_set>

#include "catalog/CatalogCommit.h"
#include "catalog/CatalogFile.h"

namespace lirvox::catalog {
namespace {

// A person has looked at the track meanwhile; another process may have changed it.
void expectThere(CatalogFile& file, const std::string& path, const ListedTrack& track) {
  SQLite::Statement query(file.database(),
                          "SELECT 1 FROM tracks WHERE track_id = ? AND path = ? AND title = ?");
  SQLite::bind(query, track.id, track.info.path, track.info.title);
  if (query.executeStep()) return;
  throw CatalogError(path + ": has changed meanwhile: track " + std::to_string(track.id) +
                     " is another one");
}

void moveSource(CatalogFile& file, const std::string& path, const std::string& from,
                const std::string& to) {
  SQLite::Statement taken(file.database(), "SELECT track_id FROM sources WHERE path = ?");
  taken.bind(1, to);
  if (taken.executeStep()) {
    throw CatalogError(path + ": track " + taken.getColumn(0).getString() + " has the path " + to);
  }
  SQLite::Statement update(file.database(), "UPDATE sources SET path = ? WHERE path = ?");
  SQLite::bind(update, to, from);
  update.exec();
}

}  // namespace

void removeTracks(const std::string& path, const std::vector<ListedTrack>& tracks) {
  CatalogFile file(path, CatalogFile::Which::existing);
  naming(path, [&] {
    // Nobody else writes from the first look on.
    file.database().exec("PRAGMA locking_mode = EXCLUSIVE");
    std::unordered_set<std::int32_t> ids;
    for (const ListedTrack& track : tracks) {
      expectThere(file, path, track);
      ids.insert(track.id);
    }
    CommonHashRule rule;
    rule.timesMean = file.note("common hashes").value_or(rule.timesMean);
    CatalogCommit(file, rule).remove(ids);
  });
}

void renameTrack(const std::string& path, const ListedTrack& track, const NewNames& names) {
  CatalogFile file(path, CatalogFile::Which::existing);
  naming(path, [&] {
    SQLite::Transaction transaction(file.database(), SQLite::TransactionBehavior::IMMEDIATE);
    expectThere(file, path, track);
    const TrackInfo& old = track.info;
    const std::string newPath = names.path.value_or(old.path);
    if (newPath != old.path) moveSource(file, path, old.path, newPath);
    SQLite::Statement update(
        file.database(), "UPDATE tracks SET title = ?, artist = ?, path = ? WHERE track_id = ?");
    SQLite::bind(update, names.title.value_or(old.title), names.artist.value_or(old.artist),
                 newPath, track.id);
    update.exec();
    transaction.commit();
  });
}

}  // namespace lirvox::catalog
