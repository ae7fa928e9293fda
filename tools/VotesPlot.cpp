// The picture of how the tracks of a database are aligned with a sound.
#include "tools/VotesPlot.h"

#include <algorithm>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "tools/Axes.h"
#include "tools/Console.h"

namespace lirvox::tools {
namespace {

constexpr std::size_t kTracks = 5;
constexpr double kTitleHeight = 50.0;
constexpr double kRowHeight = 66.0;
constexpr double kRowTitleHeight = 18.0;
constexpr double kScaleHeight = 46.0;

constexpr Color kBars = palette::blue;
constexpr Color kWinner = palette::vermilion;

// The best aligned tracks, as indices; the winner is among them.
std::vector<std::size_t> tracksToShow(const Examination& examined) {
  const auto& ranking = examined.statistics()->ranking();
  std::vector<std::size_t> tracks(
      ranking.begin(),
      ranking.begin() + static_cast<std::ptrdiff_t>(std::min(kTracks, ranking.size())));
  const Decision& decision = *examined.decision();
  if (!decision.result) return tracks;
  const auto isWinner = [&](std::size_t track) {
    return decision.hits.tracks()[track].id == decision.result->result_id;
  };
  if (std::none_of(tracks.begin(), tracks.end(), isWinner)) {
    tracks.back() = *std::find_if(ranking.begin(), ranking.end(), isWinner);
  }
  return tracks;
}

// How many hits of a track have each offset, in seconds.
std::map<double, std::int32_t> offsetHistogram(const Decision& decision, std::size_t track) {
  std::map<double, std::int32_t> histogram;
  for (const HitsByTrack::Bin bin : decision.hits.tracks()[track]) {
    ++histogram[secondsOf(DecimalString(decision.hits.offset(bin)))];
  }
  return histogram;
}

class VotesChart {
 public:
  VotesChart(Drawing& drawing, double left, double right, double top, const Examination& examined,
             const Titles& titles)
      : drawing_(drawing),
        left_(left),
        right_(right),
        top_(top),
        examined_(examined),
        decision_(*examined.decision()),
        titles_(titles),
        standing_(*examined.statistics(), examined.minimum()),
        needed_(LeaderStanding::kTimesFourth * standing_.fourth()) {
    for (const std::size_t track : tracksToShow(examined)) {
      rows_.push_back(makeRow(track));
    }
    for (const Row& row : rows_) {
      seconds_.from = std::min(seconds_.from, row.histogram.begin()->first);
      seconds_.to = std::max(seconds_.to, row.histogram.rbegin()->first);
      highest_ = std::max(highest_, static_cast<double>(row.votes));
    }
    highest_ = 1.15 * std::max({highest_, needed_, static_cast<double>(examined.minimum())});
    seconds_.to += 0.01 * (seconds_.to - seconds_.from);
  }

  void draw() {
    drawTitle();
    for (std::size_t i = 0; i < rows_.size(); ++i) drawRow(i);
  }

 private:
  struct Row {
    std::string title;
    std::map<double, std::int32_t> histogram;
    std::int32_t most;   // of its own hits at one offset: what the rows are ordered by
    double place;        // where the votes are counted, in seconds
    std::int32_t votes;  // by its own hits; those of the winner as they were counted
    bool wins;
  };

  Row makeRow(std::size_t track) const {
    const DecimalString id = decision_.hits.tracks()[track].id;
    const auto& result = decision_.result;
    const bool wins = result && result->result_id == id;
    return {titles_.of(id.intValue()),
            offsetHistogram(decision_, track),
            examined_.ownPeak(track),
            secondsOf(wins ? result->result_time : DecimalString(examined_.ownOffset(track))),
            wins ? result->result_count.intValue() : (*examined_.statistics())[track].count,
            wins};
  }

  void drawTitle() {
    using Mark = LegendEntry::Mark;
    drawing_.text({left_, top_ + 8}, "Best aligned tracks, by the most hits at one offset",
                  {.size = 13, .bold = true});
    std::vector<LegendEntry> entries = {
        {Mark::box, kBars, "hits at one offset"},
        {Mark::dot, kBars, "votes: hits in a window of three offsets"},
        {Mark::dashes, palette::ink, "minimum " + std::to_string(examined_.minimum())}};
    if (needed_ > examined_.minimum()) {
      entries.push_back(
          {Mark::dashes, palette::purple,
           "1.75 times the " + std::to_string(standing_.fourth()) + " of the fourth best"});
    }
    if (decision_.result) entries.push_back({Mark::box, kWinner, "winner"});
    drawLegend(drawing_, right_, top_ + 29, entries);
  }

  void drawRow(std::size_t number) {
    const Row& row = rows_[number];
    const double top = top_ + kTitleHeight + static_cast<double>(number) * kRowHeight;
    const Box box{left_, top + kRowTitleHeight, right_ - left_, kRowHeight - kRowTitleHeight - 8};
    const Axes axes(drawing_, box, seconds_, {0.0, highest_});
    const bool isLast = number + 1 == rows_.size();
    axes.scaleX({isLast ? "Place in the track at which the excerpt would start (min:s)" : "",
                 clockTicks(seconds_, 12),
                 [isLast](double second) { return isLast ? clockTime(second) : std::string(); }},
                true);
    axes.scaleY({"", decimalTicks({0.0, highest_}, 2),
                 [](double votes) { return std::to_string(static_cast<int>(votes)); }},
                false);
    drawThresholds(axes);
    drawBars(axes, row);
    markVotes(axes, row);
    axes.frame();
    drawRowTitle(row, number, top + 8);
  }

  void drawThresholds(const Axes& axes) {
    const auto across = [&](double votes, Color color) {
      drawing_.line(axes.at(seconds_.from, votes), axes.at(seconds_.to, votes), {color, 1.0, true});
    };
    across(examined_.minimum(), palette::ink);
    if (needed_ > examined_.minimum()) across(needed_, palette::purple);
  }

  void drawBars(const Axes& axes, const Row& row) {
    // Of the offsets that share a column of the page the highest is enough.
    std::map<long, std::int32_t> columns;
    for (const auto& [second, hits] : row.histogram) {
      std::int32_t& highest = columns[static_cast<long>(axes.x(second))];
      highest = std::max(highest, hits);
    }
    for (const auto& [column, hits] : columns) {
      const double x = static_cast<double>(column) + 0.5;
      drawing_.line({x, axes.box().bottom()}, {x, axes.y(hits)}, {kBars, 1.4});
    }
  }

  void markVotes(const Axes& axes, const Row& row) {
    const Color color = row.wins ? kWinner : kBars;
    const Point place = axes.at(row.place, row.votes);
    drawing_.line({place.x, axes.box().bottom()}, place, {color, row.wins ? 3.0 : 1.4});
    drawing_.disc(place, 4.0, color);
  }

  void drawRowTitle(const Row& row, std::size_t number, double y) {
    const Color color = row.wins ? kWinner : palette::ink;
    const std::string votes = std::to_string(row.most) + " at one offset, " +
                              counted(row.votes, "vote") + " at " + clockTime(row.place) +
                              (row.wins ? ", wins" : "");
    const double width = drawing_.textWidth(votes, {.bold = row.wins});
    drawing_.text({right_, y}, votes, {.color = color, .align = Align::right, .bold = row.wins});
    drawing_.text({left_, y}, std::to_string(number + 1) + ". " + row.title,
                  {.color = color, .bold = row.wins, .maxWidth = right_ - left_ - width - 30});
  }

  Drawing& drawing_;
  const double left_;
  const double right_;
  const double top_;
  const Examination& examined_;
  const Decision& decision_;
  const Titles& titles_;
  const LeaderStanding standing_;
  const double needed_;  // votes with which the leader stands out
  std::vector<Row> rows_;
  Range seconds_{0.0, 1.0};
  double highest_ = 0.0;
};

}  // namespace

double votesHeight(const Examination& examined) {
  return kTitleHeight + static_cast<double>(tracksToShow(examined).size()) * kRowHeight +
         kScaleHeight;
}

void drawVotes(Drawing& drawing, double left, double right, double top, const Examination& examined,
               const Titles& titles) {
  VotesChart(drawing, left, right, top, examined, titles).draw();
}

}  // namespace lirvox::tools
