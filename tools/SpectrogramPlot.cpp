// The picture of what the recognizer sees in a sound.
#include "tools/SpectrogramPlot.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "lib/LirvoxSettings.h"
#include "lib/LirvoxUtilities.h"
#include "lib/PeakPicking.h"
#include "tools/Axes.h"
#include "tools/Console.h"

namespace lirvox::tools {
namespace {

constexpr Color kPeak = palette::blue;
constexpr Color kVote = palette::vermilion;

// Whether a query hash is one of the votes for `place`: those in the window below it.
bool isVote(const QueryHash& query, const LirvoxRowMap& rows, const TrackPlace& place) {
  for (const LirvoxDBRow& row : rows.find(DecimalString(query.hash))) {
    const std::int64_t offset = std::int64_t{row.time_in_track.intValue()} - query.time;
    if (row.track_id.intValue() == place.trackId && offset <= place.offset &&
        offset >= place.offset - 2) {
      return true;
    }
  }
  return false;
}

// Which of the hashes of a shift, and so of its landmarks, are votes.
std::vector<bool> votesOf(const Examination& examined, std::size_t shift,
                          const std::optional<TrackPlace>& place) {
  const std::vector<QueryHash>& hashes = examined.hashesByShift()[shift];
  std::vector<bool> votes(hashes.size());
  if (!place || !examined.rows()) return votes;
  for (std::size_t i = 0; i < hashes.size(); ++i) {
    votes[i] = isVote(hashes[i], *examined.rows(), *place);
  }
  return votes;
}

// One shift as the recognizer has seen it, stage by stage.
class View {
 public:
  View(const Examination& examined, const std::optional<TrackPlace>& place)
      : shift_(chooseShift(examined, place)),
        filtered_(examined.density(shift_)),
        votes_(votesOf(examined, shift_, place)) {
    takeLogarithm(filtered_);
    highPass(filtered_);
    peaks_ = pickPeaks(filtered_);
    landmarks_ =
        LirvoxUtilities::peaks2landmarks(peaks_.data(), static_cast<std::int32_t>(peaks_.size()));
  }

  std::size_t shift() const { return shift_; }
  const Spectrogram& filtered() const { return filtered_; }
  const std::vector<Peak>& peaks() const { return peaks_; }
  const std::vector<Landmark>& landmarks() const { return landmarks_; }
  bool isVote(std::size_t landmark) const { return votes_[landmark]; }
  std::size_t voteCount() const { return countOf(votes_); }

  /// The middle of a frame, in seconds of the excerpt.
  double seconds(double frame) const {
    const double hop = LirvoxSettings::settingNHop();
    const double first = static_cast<double>(shift_) * hop / LirvoxSettings::settingSHIFTS() +
                         LirvoxSettings::settingNFFT() / 2.0;
    return (first + frame * hop) / LirvoxSettings::settingSampleRate();
  }
  static double hertz(double bin) {
    return bin * LirvoxSettings::settingSampleRate() / LirvoxSettings::settingNFFT();
  }

 private:
  static std::size_t countOf(const std::vector<bool>& votes) {
    return static_cast<std::size_t>(std::count(votes.begin(), votes.end(), true));
  }

  static std::size_t chooseShift(const Examination& examined,
                                 const std::optional<TrackPlace>& place) {
    std::size_t best = 0;
    std::size_t most = 0;
    for (std::size_t shift = 0; shift < examined.hashesByShift().size(); ++shift) {
      const std::size_t count = countOf(votesOf(examined, shift, place));
      if (count > most) {
        best = shift;
        most = count;
      }
    }
    return best;
  }

  std::size_t shift_;
  Spectrogram filtered_;
  std::vector<bool> votes_;  // of each landmark
  std::vector<Peak> peaks_;
  std::vector<Landmark> landmarks_;
};

// The values between which the greys run: nearly all, so that single ones do not decide.
Range contrastOf(const Spectrogram& specgram) {
  std::vector<double> values = specgram.values();
  const auto at = [&](double part) {
    const auto place = static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + place, values.end());
    return values[static_cast<std::size_t>(place)];
  };
  const Range range{at(0.30), at(0.998)};
  return range.to > range.from ? range : Range{range.from, range.from + 1.0};
}

// The louder, the darker; no black, so that what is drawn on it can be seen.
std::uint32_t grey(double value, Range contrast) {
  const double part = std::clamp((value - contrast.from) / (contrast.to - contrast.from), 0.0, 1.0);
  const auto level = static_cast<std::uint32_t>(std::lround(255.0 - 150.0 * part));
  return level << 16 | level << 8 | level;
}

void drawImage(Drawing& drawing, const Axes& axes, const View& view) {
  const Spectrogram& filtered = view.filtered();
  const auto frames = static_cast<std::size_t>(filtered.frameCount());
  if (frames == 0) return;
  const std::size_t bins = filtered.binCount() - 1;  // the last is not filtered
  const Range contrast = contrastOf(filtered);
  std::vector<std::uint32_t> pixels(bins * frames);
  for (std::size_t frame = 0; frame < frames; ++frame) {
    const double* const values = filtered.frame(static_cast<std::int32_t>(frame));
    for (std::size_t bin = 0; bin < bins; ++bin) {
      pixels[(bins - 1 - bin) * frames + frame] = grey(values[bin], contrast);
    }
  }
  const double left = axes.x(view.seconds(-0.5));
  const double right = axes.x(view.seconds(static_cast<double>(frames) - 0.5));
  const double top = axes.y(View::hertz(static_cast<double>(bins) - 0.5));
  const double bottom = axes.y(View::hertz(-0.5));
  drawing.image({left, top, right - left, bottom - top}, frames, bins, pixels);
}

void drawLandmark(Drawing& drawing, const Axes& axes, const View& view, const Landmark& landmark,
                  const Stroke& stroke) {
  const auto& [t1, f1, f2, dt] = landmark;
  drawing.line(axes.at(view.seconds(t1), View::hertz(f1)),
               axes.at(view.seconds(t1 + dt), View::hertz(f2)), stroke);
}

void drawLandmarks(Drawing& drawing, const Axes& axes, const View& view) {
  for (const Landmark& landmark : view.landmarks()) {
    drawLandmark(drawing, axes, view, landmark, {kPeak.withAlpha(0.35), 0.8});
  }
  for (const Peak& peak : view.peaks()) {
    drawing.disc(axes.at(view.seconds(peak.frame), View::hertz(peak.bin)), 2.0, kPeak);
  }
  for (std::size_t i = 0; i < view.landmarks().size(); ++i) {
    if (!view.isVote(i)) continue;
    const auto& [t1, f1, f2, dt] = view.landmarks()[i];
    drawLandmark(drawing, axes, view, view.landmarks()[i], {kVote, 1.6});
    drawing.disc(axes.at(view.seconds(t1), View::hertz(f1)), 2.6, kVote);
    drawing.disc(axes.at(view.seconds(t1 + dt), View::hertz(f2)), 2.6, kVote);
  }
}

void drawTitle(Drawing& drawing, const Box& box, const View& view, bool hasPlace) {
  using Mark = LegendEntry::Mark;
  drawing.text({box.left, box.top - 14},
               "What the recognizer sees (shift " + std::to_string(view.shift()) + " of 0 to 3)",
               {.size = 13, .bold = true});
  std::vector<LegendEntry> entries = {
      {Mark::box, {0.5, 0.5, 0.5}, "high-passed log spectrum"},
      {Mark::dot, kPeak, counted(view.peaks().size(), "peak")},
      {Mark::line, kPeak.withAlpha(0.5), counted(view.landmarks().size(), "landmark")}};
  if (hasPlace) {
    entries.push_back({Mark::line, kVote, counted(view.voteCount(), "vote") + " among them"});
  }
  drawLegend(drawing, box.right(), box.top - 14, entries);
}

}  // namespace

void drawSpectrogram(Drawing& drawing, const Box& box, const Examination& examined,
                     const std::optional<TrackPlace>& place) {
  const View view(examined, place);
  const Range seconds{0.0, examined.seconds()};
  const Range hertz{0.0, LirvoxSettings::settingSampleRate() / 2.0};
  const Axes axes(drawing, box, seconds, hertz);
  drawing.clip(box);
  drawImage(drawing, axes, view);
  drawLandmarks(drawing, axes, view);
  drawing.unclip();
  const auto number = [](double value) {
    std::string text = std::to_string(value);
    text.erase(text.find_last_not_of('0') + 1);
    return text.back() == '.' ? text.substr(0, text.size() - 1) : text;
  };
  axes.scaleX({"Time in the excerpt (s)", decimalTicks(seconds, 12), number}, false);
  axes.scaleY({"Frequency (Hz)", decimalTicks(hertz, 6), number}, false);
  axes.frame();
  drawTitle(drawing, box, view, place.has_value());
}

}  // namespace lirvox::tools
