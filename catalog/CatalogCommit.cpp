// One change of a catalogue, from its first statement to its last.
#include "catalog/CatalogCommit.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <queue>
#include <string>
#include <tuple>

namespace lirvox::catalog {
namespace {

struct Row {
  std::uint32_t hash;
  std::int32_t track;
  std::int32_t time;
};

// The rows of all tracks in the order of the file. Each track has its own in order.
class RowMerge {
 public:
  RowMerge(const std::vector<NewTrack>& tracks, const std::vector<std::int32_t>& ids) {
    for (std::size_t i = 0; i < tracks.size(); ++i) {
      const std::vector<QueryHash>& rows = tracks[i].rows;
      if (!rows.empty()) sources_.push({rows.data(), rows.data() + rows.size(), ids[i]});
    }
  }

  std::optional<Row> next() {
    if (sources_.empty()) return std::nullopt;
    Source source = sources_.top();
    sources_.pop();
    const QueryHash& row = *source.next++;
    if (source.next != source.end) sources_.push(source);
    return Row{static_cast<std::uint32_t>(row.hash), source.track, row.time};
  }

 private:
  struct Source {
    const QueryHash* next;
    const QueryHash* end;
    std::int32_t track;
  };
  struct IsLater {
    bool operator()(const Source& a, const Source& b) const {
      return std::tie(a.next->hash, a.track) > std::tie(b.next->hash, b.track);
    }
  };

  std::priority_queue<Source, std::vector<Source>, IsLater> sources_;
};

}  // namespace

CatalogCommit::CatalogCommit(CatalogFile& file, const CommonHashRule& rule)
    : file_(file), database_(file.database()), rule_(rule) {}

void CatalogCommit::run(const std::vector<NewTrack>& tracks) {
  SQLite::Transaction transaction(database_, SQLite::TransactionBehavior::IMMEDIATE);
  loadCounts();
  const std::vector<std::int32_t> ids = assignIds(tracks);
  countRows(tracks);
  limit_ = commonHashLimit(counts_, rule_);
  moveRows();
  insertRows(tracks, ids);
  writeTracks(tracks, ids);
  writeNotes();
  transaction.commit();
}

void CatalogCommit::remove(const std::unordered_set<std::int32_t>& tracks) {
  SQLite::Transaction transaction(database_, SQLite::TransactionBehavior::IMMEDIATE);
  loadCounts();
  file_.setNote(kLargestIdNote, largestId());
  removeRows(tracks);
  limit_ = commonHashLimit(counts_, rule_);
  moveRows();
  for (const std::string table : {"tracks", "sources"}) {
    SQLite::Statement statement(database_, "DELETE FROM " + table + " WHERE track_id = ?");
    for (const std::int32_t track : tracks) {
      statement.bind(1, track);
      statement.exec();
      statement.reset();
    }
  }
  writeNotes();
  transaction.commit();
}

void CatalogCommit::loadCounts() {
  oldCounts_ = file_.hashCounts();
  counts_ = oldCounts_;
  oldLimit_ = file_.commonHashLimit();
}

// The largest id that was ever given.
std::int32_t CatalogCommit::largestId() {
  return std::max(asNumber<std::int32_t>(file_.note(kLargestIdNote).value_or(0)),
                  database_.execAndGet("SELECT coalesce(max(track_id), 0) FROM tracks").getInt());
}

// Ids count from 1: an id of 0 could not be told from no result. A track whose path is
// known keeps its id and loses its rows.
std::vector<std::int32_t> CatalogCommit::assignIds(const std::vector<NewTrack>& tracks) {
  const std::int32_t largest = largestId();
  if (tracks.size() >
      static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max() - largest)) {
    throw SQLite::Exception("there are more tracks than ids");
  }
  std::int32_t next = largest + 1;
  SQLite::Statement known(database_, "SELECT track_id FROM sources WHERE path = ?");
  std::unordered_set<std::int32_t> replaced;
  std::vector<std::int32_t> ids;
  for (const NewTrack& track : tracks) {
    known.reset();
    known.bind(1, track.info.path);
    if (known.executeStep()) {
      ids.push_back(known.getColumn(0).getInt());
      replaced.insert(ids.back());
    } else {
      ids.push_back(next++);
    }
  }
  known.reset();
  if (!replaced.empty()) removeRows(replaced);
  return ids;
}

// Rows are found by hash only, so that the file stays small; by track, all are read.
void CatalogCommit::removeRows(const std::unordered_set<std::int32_t>& tracks) {
  database_.exec("CREATE TEMP TABLE removed(track_id INTEGER PRIMARY KEY)");
  SQLite::Statement insert(database_, "INSERT INTO removed VALUES(?)");
  for (const std::int32_t track : tracks) {
    insert.bind(1, track);
    insert.exec();
    insert.reset();
  }
  for (const std::string table : {"db", "held"}) {
    const std::string rows = " FROM " + table + " WHERE track_id IN (SELECT track_id FROM removed)";
    SQLite::Statement query(database_, "SELECT num2" + rows);
    while (query.executeStep()) --counts_.at(query.getColumn(0).getUInt());
    query.reset();
    database_.exec("DELETE" + rows);
  }
  database_.exec("DROP TABLE removed");
}

void CatalogCommit::countRows(const std::vector<NewTrack>& tracks) {
  for (const NewTrack& track : tracks) {
    for (const QueryHash& row : track.rows) ++counts_[static_cast<std::uint32_t>(row.hash)];
  }
}

// Rows that are there already change their table when their hash becomes common, or
// no longer is.
void CatalogCommit::moveRows() {
  const auto mover = [this](const std::string& from, const std::string& to) {
    return std::pair(SQLite::Statement(database_, "INSERT INTO " + to + " SELECT * FROM " + from +
                                                      " WHERE num2 = ?"),
                     SQLite::Statement(database_, "DELETE FROM " + from + " WHERE num2 = ?"));
  };
  auto hold = mover("db", "held");
  auto release = mover("held", "db");
  for (std::uint32_t hash = 0; hash < kHashes; ++hash) {
    const bool wasHeld = oldCounts_[hash] > oldLimit_;
    if (oldCounts_[hash] == 0 || wasHeld == isHeld(hash)) continue;
    auto& [copy, remove] = wasHeld ? release : hold;
    for (SQLite::Statement* const statement : {&copy, &remove}) {
      statement->bind(1, hash);
      statement->exec();
      statement->reset();
    }
  }
}

void CatalogCommit::insertRows(const std::vector<NewTrack>& tracks,
                               const std::vector<std::int32_t>& ids) {
  SQLite::Statement intoDb(database_, "INSERT INTO db(num2, track_id, num1) VALUES(?, ?, ?)");
  SQLite::Statement intoHeld(database_, "INSERT INTO held(num2, track_id, num1) VALUES(?, ?, ?)");
  RowMerge merge(tracks, ids);
  while (const auto row = merge.next()) {
    SQLite::Statement& insert = isHeld(row->hash) ? intoHeld : intoDb;
    insert.bind(1, row->hash);
    insert.bind(2, row->track);
    insert.bind(3, row->time);
    insert.exec();
    insert.reset();
  }
}

void CatalogCommit::writeTracks(const std::vector<NewTrack>& tracks,
                                const std::vector<std::int32_t>& ids) {
  SQLite::Statement track(database_, "INSERT OR REPLACE INTO tracks VALUES(?, ?, ?, ?, ?)");
  SQLite::Statement source(database_, "INSERT OR REPLACE INTO sources VALUES(?, ?, ?, ?)");
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    const TrackInfo& info = tracks[i].info;
    SQLite::bind(track, ids[i], info.title, info.artist, info.path, info.durationInSeconds);
    track.exec();
    track.reset();
    SQLite::bind(source, info.path, ids[i], tracks[i].stamp.size, tracks[i].stamp.modified);
    source.exec();
    source.reset();
  }
}

void CatalogCommit::writeNotes() {
  file_.setNote("common hashes", rule_.timesMean);
  file_.setHashCounts(counts_, limit_);
}

}  // namespace lirvox::catalog
