// Whether the rows of a database can be.
#include "catalog/RowVerification.h"

#include <cmath>
#include <limits>
#include <optional>

#include "lib/LirvoxSettings.h"

namespace lirvox::catalog {

RowVerification::RowVerification(SQLite::Database& database, Findings& findings)
    : database_(database), findings_(findings), counts_(kHashes) {
  hasTracks_ = database_.tableExists("tracks");
  if (hasTracks_) loadTracks();
}

void RowVerification::loadTracks() {
  const double framesPerSecond = static_cast<double>(LirvoxSettings::settingSampleRate()) /
                                 static_cast<double>(LirvoxSettings::settingNHop());
  SQLite::Statement query(database_, "SELECT track_id, duration FROM tracks");
  while (query.executeStep()) {
    const std::int64_t id = query.getColumn(0).getInt64();
    const double duration = query.getColumn(1).getDouble();
    frames_[id] = std::max(0.0, std::ceil(duration * framesPerSecond));
    if (id <= 0 || id > std::numeric_limits<std::int32_t>::max()) {
      findings_.add("tracks with ids that no recognition can return", std::to_string(id));
    }
    if (!(duration >= 0.0)) {
      findings_.add("tracks that last less than nothing", "track " + std::to_string(id));
    }
  }
}

void RowVerification::read(const std::string& table, const ProgressHandler& progress) {
  SQLite::Statement query(
      database_, "SELECT num2, track_id, num1 FROM " + table + " ORDER BY num2, track_id, num1");
  std::optional<Row> last;
  for (std::uint64_t i = 0; query.executeStep(); ++i) {
    const Row row = {query.getColumn(0).getInt64(), query.getColumn(1).getInt64(),
                     query.getColumn(2).getInt64()};
    for (int column = 0; column < 3; ++column) {
      if (query.getColumn(column).isInteger()) continue;
      findings_.add("values in rows that are no whole numbers",
                    table + ": " + query.getColumn(column).getString());
    }
    check(row, table);
    if (last && last->hash == row.hash && last->track == row.track && last->time == row.time) {
      findings_.add("rows that are there twice",
                    "hash " + std::to_string(row.hash) + " of track " + std::to_string(row.track));
    }
    last = row;
    if (i % 65536 == 0) progress(static_cast<double>(row.hash) / kHashes);
  }
}

void RowVerification::check(const Row& row, const std::string& table) {
  const auto example = [&] {
    return table + ": hash " + std::to_string(row.hash) + ", track " + std::to_string(row.track) +
           ", time " + std::to_string(row.time);
  };
  if (row.hash >= 0 && row.hash < kHashes) {
    ++counts_[static_cast<std::size_t>(row.hash)];
  } else {
    findings_.add("rows with hashes that cannot occur", example);
  }
  if (row.time < 0 || row.time > std::numeric_limits<std::int32_t>::max()) {
    findings_.add("rows with times that cannot be", example);
  }
  if (row.track <= 0 || row.track > std::numeric_limits<std::int32_t>::max()) {
    findings_.add("rows with ids that no recognition can return", example);
  }
  if (!hasTracks_) return;
  const auto track = frames_.find(row.track);
  if (track == frames_.end()) {
    findings_.add("rows without a track", example);
  } else if (track->second > 0.0 && static_cast<double>(row.time) > track->second) {
    findings_.add("rows later than the end of their track", example);
  }
}

}  // namespace lirvox::catalog
