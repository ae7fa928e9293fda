// A fingerprint database that grows: what `lirvox index` writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "catalog/HashCounts.h"
#include "catalog/RowSelection.h"
#include "lib/Landmark.h"

namespace lirvox::catalog {

class CatalogFile;

/// What people want to know of a track.
struct TrackInfo {
  std::string title;
  std::string artist;
  std::string path;
  double durationInSeconds = 0.0;
};

/// What tells whether a file is the one that was indexed.
struct FileStamp {
  std::int64_t size = 0;
  std::int64_t modified = 0;
};

/// A track to be added.
struct NewTrack {
  TrackInfo info;
  FileStamp stamp;
  /// Distinct pairs in the order of `TrackFingerprinter::finish`.
  std::vector<QueryHash> rows;
};

/// How a catalogue is kept. What is not given is as the catalogue has it, or the default
/// in a new one.
struct CatalogOptions {
  /// Fixed when a catalogue begins: tracks with other rows would be found more or less
  /// easily than the rest.
  std::optional<int> alignments;
  std::optional<std::int32_t> rowsPerHour;
  /// May change with every commit.
  std::optional<double> commonHashes;
};

/// One SQLite file. Table `db` holds the rows that the recognizer looks up, clustered
/// by hash; `tracks` says what the ids stand for. Rows of hashes that are too common
/// to tell tracks apart are kept aside in `held`, from where they return when the
/// catalogue grows and the rule no longer takes their hash for common; `sources`
/// and `config` are the catalogue's own notes. Devices need `db` and `tracks` only.
///
/// Changes are whole: until `commit` has returned, the file is as it was, whatever
/// ends the process. One thread at a time; `CatalogError` says what went wrong.
class Catalog {
 public:
  /// Opens the catalogue at `path`, or begins a new one, which appears there with the
  /// first commit. A file that is no catalogue is an error and stays untouched.
  Catalog(const std::string& path, const CatalogOptions& options);
  ~Catalog();

  Catalog(const Catalog&) = delete;
  Catalog& operator=(const Catalog&) = delete;

  /// How the rows of its tracks are chosen.
  const RowRule& rowRule() const { return rowRule_; }

  /// Whether the file at `path` was indexed and has not changed since.
  bool contains(const std::string& path, const FileStamp& stamp);

  /// Lines a track up for the next commit. One of the same path that is there already
  /// is replaced, under its id. Commits by itself when enough rows have gathered.
  void add(NewTrack track);

  /// Writes the tracks that were added, in one pass over the file in hash order.
  void commit();

 private:
  std::size_t rowsInFile();

  const std::string path_;
  const std::unique_ptr<CatalogFile> file_;
  RowRule rowRule_;
  CommonHashRule commonHashRule_;
  std::vector<NewTrack> pending_;
  std::size_t pendingRows_ = 0;
};

}  // namespace lirvox::catalog
