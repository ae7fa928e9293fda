// Which rows of a track are worth their place in a database.
#include "catalog/RowSelection.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <limits>

namespace lirvox::catalog {
namespace {

using ScoredRow = RowSelection::ScoredRow;

// The vote counts over this many neighbouring frames.
constexpr std::int32_t kVoteWindowInFrames = 3;

constexpr std::size_t kRowsToRead = 4096;
constexpr std::size_t kBuckets = std::size_t{1} << 16;

bool inOrder(const QueryHash& a, const QueryHash& b) {
  return a.hash != b.hash ? a.hash < b.hash : a.time < b.time;
}

bool isBefore(const ScoredRow& a, const ScoredRow& b) {
  return inOrder(a.row, b.row);
}

bool isBetter(const ScoredRow& a, const ScoredRow& b) {
  return a.score != b.score ? a.score > b.score : inOrder(a.row, b.row);
}

// Scores are positive, and the bits of positive floats have the order of their values.
std::size_t bucketOf(const ScoredRow& row) {
  return std::bit_cast<std::uint32_t>(row.score) >> 16;
}

// Appends one entry per row. Measured on real music, a row that all alignments show earns
// nine times the votes of one that a single alignment shows, and strength counts about as
// much.
void score(std::vector<Sighting>& sightings, std::vector<ScoredRow>& rows) {
  std::sort(sightings.begin(), sightings.end(),
            [](const Sighting& a, const Sighting& b) { return inOrder(a.row, b.row); });
  for (auto first = sightings.begin(); first != sightings.end();) {
    const auto last = std::find_if(first, sightings.end(),
                                   [&](const Sighting& s) { return !(s.row == first->row); });
    float strongest = 0.0F;
    for (auto s = first; s != last; ++s) strongest = std::max(strongest, s->strength);
    rows.push_back({first->row, static_cast<float>(last - first) * (1.0F + strongest)});
    first = last;
  }
}

// Keeps of the rows [first, last) of one hash those that no better one is close to.
void thinOut(const ScoredRow* first, const ScoredRow* last, std::vector<ScoredRow>& kept) {
  std::vector<ScoredRow> byScore(first, last);
  std::sort(byScore.begin(), byScore.end(), isBetter);
  std::vector<std::int32_t> times;  // of those kept, ascending
  for (const ScoredRow& row : byScore) {
    const auto next = std::lower_bound(times.begin(), times.end(), row.row.time);
    const bool close = (next != times.end() && *next - row.row.time < kVoteWindowInFrames) ||
                       (next != times.begin() && row.row.time - *(next - 1) < kVoteWindowInFrames);
    if (close) continue;
    times.insert(next, row.row.time);
    kept.push_back(row);
  }
}

bool areClose(const ScoredRow& row, const ScoredRow& next) {
  return row.row.hash == next.row.hash && next.row.time - row.row.time < kVoteWindowInFrames;
}

}  // namespace

RowSelection::RowSelection(bool best, std::size_t bytesInMemory)
    : best_(best), kept_(bytesInMemory), histogram_(kBuckets) {}

void RowSelection::add(std::vector<Sighting>& sightings, std::int32_t end) {
  const auto old = static_cast<std::ptrdiff_t>(open_.size());
  score(sightings, open_);
  std::inplace_merge(open_.begin(), open_.begin() + old, open_.end(), isBefore);
  close(end);
}

// Decides on the rows to which none at or after `end` can be close, not even by way of
// others.
void RowSelection::close(std::int32_t end) {
  std::vector<ScoredRow> decided;
  std::vector<ScoredRow> open;
  const auto past = open_.end();
  for (auto first = open_.begin(); first != past;) {
    auto last = first + 1;
    while (best_ && last != past && areClose(*(last - 1), *last)) ++last;
    if (best_ && end - (last - 1)->row.time < kVoteWindowInFrames) {
      open.insert(open.end(), first, last);
    } else if (last - first == 1) {
      decided.push_back(*first);
    } else {
      thinOut(&*first, &*first + (last - first), decided);
    }
    first = last;
  }
  open_ = std::move(open);
  keep(decided);
}

void RowSelection::keep(const std::vector<ScoredRow>& rows) {
  for (const ScoredRow& row : rows) ++histogram_[bucketOf(row)];
  kept_.append(rows.data(), rows.size());
}

std::vector<QueryHash> RowSelection::finish(std::size_t count) {
  close(std::numeric_limits<std::int32_t>::max());
  std::vector<QueryHash> rows = bestOf(best_ ? count : kept_.size());
  std::sort(rows.begin(), rows.end(), inOrder);
  clear();
  return rows;
}

// The histogram tells which scores are good enough, but for those of one bucket, of which
// only the better ones are.
std::vector<QueryHash> RowSelection::bestOf(std::size_t count) const {
  count = std::min(count, kept_.size());
  std::size_t bucket = kBuckets;
  std::size_t above = 0;
  while (above < count && above + histogram_[bucket - 1] <= count) above += histogram_[--bucket];
  std::vector<QueryHash> rows;
  rows.reserve(count);
  std::vector<ScoredRow> edge;
  std::vector<ScoredRow> part;
  for (std::size_t read = 0; read < kept_.size(); read += part.size()) {
    part.resize(std::min(kRowsToRead, kept_.size() - read));
    kept_.read(read, part.size(), part.data());
    for (const ScoredRow& row : part) {
      if (bucketOf(row) >= bucket) rows.push_back(row.row);
      if (bucketOf(row) + 1 == bucket) edge.push_back(row);
    }
  }
  const auto wanted = std::min(count - rows.size(), edge.size());
  std::nth_element(edge.begin(), edge.begin() + static_cast<std::ptrdiff_t>(wanted), edge.end(),
                   isBetter);
  for (std::size_t i = 0; i < wanted; ++i) rows.push_back(edge[i].row);
  return rows;
}

void RowSelection::clear() {
  open_.clear();
  kept_.clear();
  std::fill(histogram_.begin(), histogram_.end(), 0);
}

}  // namespace lirvox::catalog
