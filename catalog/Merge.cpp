// Many catalogues to one: what `lirvox merge` does.
#include "catalog/Merge.h"

#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <numeric>
#include <sstream>
#include <tuple>
#include <utility>

#include "catalog/CatalogFile.h"
#include "catalog/HashRows.h"
#include "catalog/MergePlan.h"

namespace lirvox::catalog {
namespace {

constexpr std::uint32_t kHashesPerProgress = 1024;
// Of the time that a merge takes, what the first reading of the parts takes.
constexpr double kShareOfCounting = 0.25;

// Each part is read from one end to the other, and there may be hundreds of them.
constexpr const char* kPartCacheSize = "PRAGMA cache_size = -256";

struct Part {
  std::string path;
  std::shared_ptr<SQLite::Database> database;
};

std::string asText(double number) {
  std::ostringstream text;
  text << number;
  return text.str();
}

class Merge {
 public:
  Merge(const std::vector<std::string>& paths, const MergeOptions& options,
        const ProgressHandler& progress);

  Merged writeTo(const std::string& output);

 private:
  std::optional<double> note(Part& part, const std::string& key) const;
  void settle(const std::string& key, std::optional<double> wanted);
  template <typename Visit>
  void forEachHash(Visit visit);
  void count();
  void copyRows(SQLite::Database& database, const CommonHashRule& rule);
  void copyTracks(SQLite::Database& database);

  std::deque<Part> parts_;
  const ProgressHandler& progress_;
  MergePlan plan_;
  std::map<std::string, double> notes_;
  HashCounts counts_;
  std::uint32_t limit_ = 0;
};

Merge::Merge(const std::vector<std::string>& paths, const MergeOptions& options,
             const ProgressHandler& progress)
    : progress_(progress), plan_(options.replace), counts_(kHashes) {
  for (const std::string& path : paths) {
    parts_.push_back({path, openCatalogForReading(path)});
    // What is read again later must be what was read first.
    naming(path, [&] {
      parts_.back().database->exec(kPartCacheSize);
      parts_.back().database->exec("BEGIN");
      plan_.add(*parts_.back().database, path);
    });
  }
  settle("alignments", {});
  settle("rows per hour", {});
  settle("common hashes", options.commonHashes);
}

std::optional<double> Merge::note(Part& part, const std::string& key) const {
  return naming(part.path, [&]() -> std::optional<double> {
    SQLite::Statement query(*part.database, "SELECT value FROM config WHERE key = ?");
    query.bind(1, key);
    if (!query.executeStep()) return std::nullopt;
    return query.getColumn(0).getDouble();
  });
}

// What all parts must have in common, unless it can be chosen.
void Merge::settle(const std::string& key, std::optional<double> wanted) {
  for (Part& part : parts_) {
    const auto value = wanted ? wanted : note(part, key);
    if (!value) throw CatalogError(part.path + ": does not say its " + key);
    const double first = notes_.try_emplace(key, *value).first->second;
    if (first == *value) continue;
    throw CatalogError(part.path + ": made with " + key + " = " + asText(*value) + ", " +
                       parts_.front().path + " with " + asText(first) +
                       (key == "common hashes" ? " (--common chooses one)"
                                               : ": only catalogues made alike can be merged"));
  }
}

// Calls `visit` with each hash that occurs and its rows, in the order of a catalogue.
template <typename Visit>
void Merge::forEachHash(Visit visit) {
  std::vector<std::pair<std::size_t, HashRows>> readers;
  for (std::size_t part = 0; part < parts_.size(); ++part) {
    for (const char* const table : {"db", "held"}) {
      naming(parts_[part].path, [&] {
        readers.emplace_back(part, HashRows(*parts_[part].database, table, parts_[part].path));
      });
    }
  }
  std::vector<StoredRow> rows;
  std::vector<StoredRow> ofPart;
  for (std::uint32_t hash = 0; hash < kHashes; ++hash) {
    rows.clear();
    for (auto& [part, reader] : readers) {
      if (reader.hash() != hash) continue;
      ofPart.clear();
      reader.take(ofPart);
      for (const StoredRow& row : ofPart) {
        const std::int32_t id = plan_.newId(part, row.track);
        if (id != 0) rows.push_back({id, row.time});
      }
    }
    visit(hash, rows);
  }
}

void Merge::count() {
  forEachHash([&](std::uint32_t hash, const std::vector<StoredRow>& rows) {
    counts_[hash] = static_cast<std::uint32_t>(rows.size());
    if (hash % kHashesPerProgress == 0) progress_(kShareOfCounting * hash / kHashes);
  });
}

void Merge::copyRows(SQLite::Database& database, const CommonHashRule& rule) {
  limit_ = commonHashLimit(counts_, rule);
  SQLite::Statement intoDb(database, "INSERT INTO db(num2, track_id, num1) VALUES(?, ?, ?)");
  SQLite::Statement intoHeld(database, "INSERT INTO held(num2, track_id, num1) VALUES(?, ?, ?)");
  forEachHash([&](std::uint32_t hash, std::vector<StoredRow>& rows) {
    // In order, pages are full; replaced tracks are the only ones out of order.
    std::sort(rows.begin(), rows.end(), [](const StoredRow& a, const StoredRow& b) {
      return std::tie(a.track, a.time) < std::tie(b.track, b.time);
    });
    SQLite::Statement& insert = counts_[hash] > limit_ ? intoHeld : intoDb;
    insert.bind(1, hash);
    for (const StoredRow& row : rows) {
      insert.bind(2, row.track);
      insert.bind(3, row.time);
      insert.exec();
      insert.reset();
    }
    if (hash % kHashesPerProgress == 0) {
      progress_(kShareOfCounting + (1.0 - kShareOfCounting) * hash / kHashes);
    }
  });
}

void Merge::copyTracks(SQLite::Database& database) {
  SQLite::Statement toTracks(database, "INSERT INTO tracks VALUES(?, ?, ?, ?, ?)");
  SQLite::Statement toSources(database, "INSERT INTO sources VALUES(?, ?, ?, ?)");
  for (const auto& [id, track] : plan_.tracks()) {
    const TrackInfo& info = track.info;
    SQLite::bind(toTracks, id, info.title, info.artist, info.path, info.durationInSeconds);
    toTracks.exec();
    toTracks.reset();
    SQLite::bind(toSources, info.path, id, track.stamp.size, track.stamp.modified);
    toSources.exec();
    toSources.reset();
  }
}

Merged Merge::writeTo(const std::string& output) {
  CatalogFile file(output, CatalogFile::Which::created);
  count();
  naming(output, [&] {
    SQLite::Transaction transaction(file.database());
    CommonHashRule rule;
    rule.timesMean = notes_.at("common hashes");
    copyRows(file.database(), rule);
    copyTracks(file.database());
    for (const auto& [key, value] : notes_) file.setNote(key, value);
    if (plan_.largestIdIsGone()) file.setNote(kLargestIdNote, plan_.largestId());
    file.setHashCounts(counts_, limit_);
    transaction.commit();
  });
  parts_.clear();  // one of them may be replaced now
  file.publish();
  progress_(1.0);
  const std::int64_t rows = std::accumulate(counts_.begin(), counts_.end(), std::int64_t{0});
  return {static_cast<std::int64_t>(plan_.tracks().size()), rows, plan_.same(), plan_.replaced()};
}

}  // namespace

Merged merge(const std::vector<std::string>& parts, const std::string& output,
             const MergeOptions& options, const ProgressHandler& progress) {
  return Merge(parts, options, progress).writeTo(output);
}

}  // namespace lirvox::catalog
