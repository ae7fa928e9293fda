// A fingerprint database that grows: what `lirvox index` writes.
#include "catalog/Catalog.h"

#include <algorithm>
#include <utility>

#include "catalog/CatalogCommit.h"
#include "catalog/CatalogFile.h"

namespace lirvox::catalog {
namespace {

// Rows wait in memory, 8 bytes each, until a commit is worth its pass over the file:
// at least this many, and then as many as the file has, so that a catalogue that grows
// from nothing is not written again and again.
constexpr std::size_t kMinimumBatch = std::size_t{1} << 22;
constexpr std::size_t kMaximumBatch = std::size_t{1} << 24;

// A note of the catalogue, or of a new one what is wanted. Another wish is refused.
template <typename Number>
Number settle(CatalogFile& file, const std::string& path, const std::string& name,
              std::optional<Number> wanted, Number otherwise) {
  const auto known = file.note(name);
  if (!known) {
    const Number chosen = wanted.value_or(otherwise);
    file.setNote(name, static_cast<double>(chosen));
    return chosen;
  }
  const auto existing = asNumber<Number>(*known);
  if (wanted && *wanted != existing) {
    throw CatalogError(path + ": made with " + name + " = " + std::to_string(existing) +
                       ", which is fixed for the tracks of one database");
  }
  return existing;
}

}  // namespace

Catalog::Catalog(const std::string& path, const CatalogOptions& options)
    : path_(path), file_(std::make_unique<CatalogFile>(path)) {
  naming(path_, [&] {
    rowRule_.alignments =
        settle(*file_, path_, "alignments", options.alignments, rowRule_.alignments);
    rowRule_.rowsPerHour =
        settle(*file_, path_, "rows per hour", options.rowsPerHour, rowRule_.rowsPerHour);
    commonHashRule_.timesMean = options.commonHashes.value_or(
        file_->note("common hashes").value_or(commonHashRule_.timesMean));
  });
}

Catalog::~Catalog() = default;

bool Catalog::contains(const std::string& path, const FileStamp& stamp) {
  return naming(path_, [&] {
    SQLite::Statement query(file_->database(),
                            "SELECT 1 FROM sources WHERE path = ? AND size = ? AND modified = ?");
    SQLite::bind(query, path, stamp.size, stamp.modified);
    return query.executeStep();
  });
}

void Catalog::add(NewTrack track) {
  pendingRows_ += track.rows.size();
  pending_.push_back(std::move(track));
  if (pendingRows_ < kMinimumBatch) return;
  if (pendingRows_ >= std::min(rowsInFile(), kMaximumBatch)) commit();
}

std::size_t Catalog::rowsInFile() {
  return naming(path_, [&] {
    return asNumber<std::size_t>(file_->note("rows").value_or(0) +
                                 file_->note("held rows").value_or(0));
  });
}

void Catalog::commit() {
  // Ids do not depend on which file happened to be read first.
  std::sort(pending_.begin(), pending_.end(),
            [](const NewTrack& a, const NewTrack& b) { return a.info.path < b.info.path; });
  try {
    naming(path_, [&] {
      CatalogCommit(*file_, commonHashRule_).run(pending_);
      file_->publish();
    });
  } catch (...) {
    file_->abandonNew();
    throw;
  }
  pending_.clear();
  pendingRows_ = 0;
}

}  // namespace lirvox::catalog
