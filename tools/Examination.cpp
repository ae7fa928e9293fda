// A recognition of an excerpt, open at every step.
#include "tools/Examination.h"

#include <algorithm>
#include <set>

#include "lib/LirvoxSettings.h"

namespace lirvox::tools {

Examination::Examination(const std::vector<std::int32_t>& samples, LirvoxDatabase* database,
                         std::int32_t minimum)
    : minimum_(minimum),
      seconds_(static_cast<double>(samples.size()) / LirvoxSettings::settingSampleRate()),
      blocks_(samples.size() /
              static_cast<std::size_t>(LirvoxSettings::minimumBufferSizeForMiniSpectogram())) {
  pass_.add(samples.data(), samples.size());
  hashesByShift_ = pass_.hashesByShift();
  for (const auto& shift : hashesByShift_) {
    hashes_.insert(hashes_.end(), shift.begin(), shift.end());
  }
  if (database) look(*database);
}

void Examination::look(LirvoxDatabase& database) {
  rows_ = database.selectFingerprints(hashes_);
  decision_ = std::make_unique<const Decision>(rows_ ? &*rows_ : nullptr, hashes_, minimum_);
  if (!decision_->hits.tracks().empty()) {
    statistics_ = std::make_unique<const TrackStatistics>(decision_->hits);
  }
}

bool Examination::isSilent() const {
  for (std::size_t shift = 0; shift < hashesByShift_.size(); ++shift) {
    const std::vector<double>& values = density(shift).values();
    if (std::any_of(values.begin(), values.end(), [](double v) { return v != 0.0; })) return false;
  }
  return true;
}

std::size_t Examination::distinctHashCount() const {
  std::set<std::int32_t> distinct;
  for (const QueryHash& query : hashes_) distinct.insert(query.hash);
  return distinct.size();
}

std::int32_t Examination::ownOffset(std::size_t track) const {
  return decision_->hits.offset((*statistics_)[track].peak.bin);
}

std::int32_t Examination::ownPeak(std::size_t track) const {
  return (*statistics_)[track].peak.height - 1;  // it is kept one above
}

}  // namespace lirvox::tools
