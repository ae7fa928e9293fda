// An evaluation as the program draws it.
#include <algorithm>
#include <cmath>
#include <sstream>

#include "tools/Axes.h"
#include "tools/Console.h"
#include "tools/EvaluationReport.h"

namespace lirvox::tools {
namespace {

constexpr double kHeight = 520.0;
constexpr double kTop = 116.0;
constexpr double kPanelHeight = 340.0;
constexpr double kLeftPanelWidth = 500.0;
constexpr double kGapWidth = 90.0;

// The rows of one length and minimum, one for each degradation.
class EvaluationChart {
 public:
  EvaluationChart(Drawing& drawing, const std::vector<EvaluatedRow>& rows)
      : drawing_(drawing), rows_(rows), ways_(degradations().size()) {
    for (std::size_t i = 0; i < ways_; ++i) {
      const bool isLevel = i == 0 || rows[i].degradation->decibels;
      (isLevel ? levels_ : others_).push_back(i);
    }
  }

  void draw(const std::string& headline) {
    drawing_.text({kPageLeft, 30}, headline,
                  {.size = 18, .bold = true, .maxWidth = kPageRight - kPageLeft});
    drawLegends();
    const Box left{kPageLeft, kTop, kLeftPanelWidth, kPanelHeight};
    const double second = left.right() + kGapWidth;
    const Axes levels = panel(left, levels_, "Level of the music above pink noise (dB)");
    const Axes others = panel({second, kTop, kPageRight - second, kPanelHeight}, others_, "");
    for (std::size_t setting = 0; setting < settingCount(); ++setting) {
      drawLines(levels, setting);
      drawStems(others, setting);
    }
    levels.frame();
    others.frame();
  }

 private:
  std::size_t settingCount() const { return rows_.size() / ways_; }
  const EvaluatedRow& row(std::size_t setting, std::size_t way) const {
    return rows_[setting * ways_ + way];
  }

  static double percent(int count, const Rate& rate) {
    return rate.trials == 0 ? 0.0 : 100.0 * count / rate.trials;
  }
  static double right(const EvaluatedRow& row) { return percent(row.rate.right, row.rate); }
  static double absent(const EvaluatedRow& row) {
    return percent(row.rate.absentAnswered, row.rate);
  }

  static std::string labelOf(const Degradation& way) {
    if (!way.decibels) return way.label;
    return std::to_string(std::lround(*way.decibels));
  }

  void drawLegends() {
    using Mark = LegendEntry::Mark;
    std::vector<LegendEntry> settings;
    for (std::size_t i = 0; i < settingCount(); ++i) {
      std::ostringstream text;
      text << row(i, 0).seconds << " s, " << counted(row(i, 0).minimum, "vote");
      settings.push_back({Mark::box, palette::lines[i], text.str()});
    }
    drawLegend(drawing_, kPageRight, 62, settings);
    drawLegend(drawing_, kPageRight, 88,
               {{Mark::dot, palette::ink, "recognized"},
                {Mark::dashes, palette::ink, "answered, though its track is not there"}});
  }

  Axes panel(const Box& box, const std::vector<std::size_t>& ways, const std::string& label) {
    const double last = static_cast<double>(ways.size()) - 0.5;
    const Axes axes(drawing_, box, {-0.5, last}, {0.0, 104.0});
    std::vector<double> ticks;
    for (std::size_t i = 0; i < ways.size(); ++i) ticks.push_back(static_cast<double>(i));
    axes.scaleX({label, ticks,
                 [&](double tick) {
                   return labelOf(*rows_[ways[static_cast<std::size_t>(tick)]].degradation);
                 }},
                false);
    axes.scaleY({"Excerpts (%)",
                 {0, 20, 40, 60, 80, 100},
                 [](double tick) { return std::to_string(std::lround(tick)); }},
                true);
    return axes;
  }

  // Over the levels of noise, which have an order.
  void drawLines(const Axes& axes, std::size_t setting) {
    std::vector<Point> recognized;
    std::vector<Point> answered;
    for (std::size_t i = 0; i < levels_.size(); ++i) {
      const EvaluatedRow& shown = row(setting, levels_[i]);
      recognized.push_back(axes.at(static_cast<double>(i), right(shown)));
      answered.push_back(axes.at(static_cast<double>(i), absent(shown)));
      drawing_.disc(recognized.back(), 4.0, palette::lines[setting]);
    }
    drawing_.polyline(recognized, {palette::lines[setting], 1.8});
    drawing_.polyline(answered, {palette::lines[setting], 1.8, true});
  }

  // Side by side, for what has no order.
  void drawStems(const Axes& axes, std::size_t setting) {
    const Color color = palette::lines[setting];
    const double middle = static_cast<double>(settingCount() - 1) / 2.0;
    const double beside = (static_cast<double>(setting) - middle) * 0.13;
    for (std::size_t i = 0; i < others_.size(); ++i) {
      const EvaluatedRow& shown = row(setting, others_[i]);
      const double x = static_cast<double>(i) + beside;
      drawing_.line(axes.at(x, 0.0), axes.at(x, right(shown)), {color, 1.8});
      drawing_.disc(axes.at(x, right(shown)), 4.0, color);
      const Point mark = axes.at(x, absent(shown));
      drawing_.line({mark.x - 6, mark.y}, {mark.x + 6, mark.y}, {color, 2.5});
    }
  }

  Drawing& drawing_;
  const std::vector<EvaluatedRow>& rows_;
  const std::size_t ways_;
  std::vector<std::size_t> levels_;  // the clean sound, and noise
  std::vector<std::size_t> others_;
};

}  // namespace

std::error_code drawEvaluation(const std::vector<EvaluatedRow>& rows, const std::string& headline,
                               const std::string& path) {
  Drawing drawing(path, kPageWidth, kHeight);
  EvaluationChart(drawing, rows).draw(headline);
  return drawing.save();
}

}  // namespace lirvox::tools
