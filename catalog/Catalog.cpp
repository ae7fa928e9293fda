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

void checkShifts(const std::string& path, Shifts existing, std::optional<Shifts> wanted) {
  if (!wanted || *wanted == existing) return;
  throw CatalogError(path + ": holds " + std::to_string(static_cast<int>(existing)) +
                     " shifts a track, and cannot be continued with another number");
}

}  // namespace

Catalog::Catalog(const std::string& path, const CatalogOptions& options)
    : path_(path), file_(std::make_unique<CatalogFile>(path)) {
  naming(path_, [&] {
    if (const auto known = file_->note("shifts")) {
      shifts_ = static_cast<Shifts>(static_cast<int>(*known));
      checkShifts(path_, shifts_, options.shifts);
    } else {
      shifts_ = options.shifts.value_or(shifts_);
      file_->setNote("shifts", static_cast<int>(shifts_));
    }
    rule_.share = file_->note("common_share").value_or(rule_.share);
    if (options.rule) rule_ = *options.rule;
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
    return static_cast<std::size_t>(file_->note("rows").value_or(0) +
                                    file_->note("held_rows").value_or(0));
  });
}

void Catalog::commit() {
  // Ids do not depend on which file happened to be read first.
  std::sort(pending_.begin(), pending_.end(), [](const NewTrack& a, const NewTrack& b) {
    return a.info.path < b.info.path;
  });
  naming(path_, [&] {
    file_->setNote("common_share", rule_.share);
    CatalogCommit(*file_, rule_).run(pending_);
    file_->publish();
  });
  pending_.clear();
  pendingRows_ = 0;
}

}  // namespace lirvox::catalog
