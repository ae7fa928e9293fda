// Which rows of a track are worth their place in a database.
#include "catalog/RowSelection.h"

#include <algorithm>
#include <utility>

namespace lirvox::catalog {
namespace {

// The vote counts over this many neighbouring frames.
constexpr std::int32_t kVoteWindowInFrames = 3;

struct ScoredRow {
  QueryHash row;
  double score;
};

bool inOrder(const QueryHash& a, const QueryHash& b) {
  return a.hash != b.hash ? a.hash < b.hash : a.time < b.time;
}

bool isBetter(const ScoredRow& a, const ScoredRow& b) {
  return a.score != b.score ? a.score > b.score : inOrder(a.row, b.row);
}

void sortSightings(std::vector<Sighting>& sightings) {
  std::sort(sightings.begin(), sightings.end(),
            [](const Sighting& a, const Sighting& b) { return inOrder(a.row, b.row); });
}

// One entry per row. Measured on real music, a row that all alignments show earns nine
// times the votes of one that a single alignment shows, and strength counts about as much.
std::vector<ScoredRow> score(std::vector<Sighting> sightings) {
  sortSightings(sightings);
  std::vector<ScoredRow> rows;
  for (auto first = sightings.begin(); first != sightings.end();) {
    const auto last = std::find_if(first, sightings.end(),
                                   [&](const Sighting& s) { return !(s.row == first->row); });
    double strongest = 0.0;
    for (auto s = first; s != last; ++s) strongest = std::max(strongest, s->strength);
    rows.push_back({first->row, static_cast<double>(last - first) * (1.0 + strongest)});
    first = last;
  }
  return rows;
}

// Keeps of the rows [first, last) of one hash those that no better one is close to.
void thinOut(const ScoredRow* first, const ScoredRow* last, std::vector<ScoredRow>& kept) {
  const std::size_t begin = kept.size();
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
  std::sort(kept.begin() + static_cast<std::ptrdiff_t>(begin), kept.end(),
            [](const ScoredRow& a, const ScoredRow& b) { return a.row.time < b.row.time; });
}

std::vector<ScoredRow> thinnedOut(const std::vector<ScoredRow>& rows) {
  std::vector<ScoredRow> kept;
  const ScoredRow* const end = rows.data() + rows.size();
  for (const ScoredRow* first = rows.data(); first != end;) {
    const ScoredRow* const last = std::find_if(
        first, end, [&](const ScoredRow& row) { return row.row.hash != first->row.hash; });
    thinOut(first, last, kept);
    first = last;
  }
  return kept;
}

}  // namespace

std::vector<QueryHash> allRows(std::vector<Sighting> sightings) {
  sortSightings(sightings);
  std::vector<QueryHash> rows;
  for (const Sighting& sighting : sightings) {
    if (rows.empty() || !(rows.back() == sighting.row)) rows.push_back(sighting.row);
  }
  return rows;
}

std::vector<QueryHash> bestRows(std::vector<Sighting> sightings, std::size_t count) {
  std::vector<ScoredRow> kept = thinnedOut(score(std::move(sightings)));
  if (kept.size() > count) {
    std::nth_element(kept.begin(), kept.begin() + static_cast<std::ptrdiff_t>(count), kept.end(),
                     isBetter);
    kept.resize(count);
  }
  std::vector<QueryHash> rows;
  rows.reserve(kept.size());
  for (const ScoredRow& row : kept) rows.push_back(row.row);
  std::sort(rows.begin(), rows.end(), inOrder);
  return rows;
}

}  // namespace lirvox::catalog
