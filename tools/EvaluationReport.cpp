// An evaluation as the program prints it.
#include "tools/EvaluationReport.h"

#include <array>
#include <cstdio>
#include <iostream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "tools/TextTable.h"

namespace lirvox::tools {
namespace {

double share(int count, const Rate& rate) {
  return rate.trials == 0 ? 0.0 : static_cast<double>(count) / rate.trials;
}

std::string percent(int count, const Rate& rate) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f", 100.0 * share(count, rate));
  return text.data();
}

std::string shown(double value) {
  std::ostringstream text;
  text << value;
  return text.str();
}

void printJson(const EvaluatedRow& row) {
  const Rate& rate = row.rate;
  nlohmann::ordered_json json = {{"seconds", row.seconds},
                                 {"min_votes", row.minimum},
                                 {"degradation", row.degradation->name},
                                 {"excerpts", rate.trials},
                                 {"recognized", share(rate.right, rate)},
                                 {"right_place", share(rate.rightPlace, rate)},
                                 {"wrong", share(rate.wrong, rate)},
                                 {"absent_answered", share(rate.absentAnswered, rate)}};
  std::cout << json.dump() << '\n';
}

}  // namespace

void printEvaluation(const std::vector<EvaluatedRow>& rows, const std::string& format) {
  std::vector<std::vector<std::string>> cells = {
      {"SECONDS", "MIN VOTES", "SOUND", "RIGHT %", "PLACE %", "WRONG %", "ABSENT %"}};
  for (const EvaluatedRow& row : rows) {
    if (format == "json") {
      printJson(row);
      continue;
    }
    const Rate& rate = row.rate;
    cells.push_back({shown(row.seconds), std::to_string(row.minimum), row.degradation->label,
                     percent(rate.right, rate), percent(rate.rightPlace, rate),
                     percent(rate.wrong, rate), percent(rate.absentAnswered, rate)});
  }
  if (format != "json") std::cout << alignedLines(cells);
}

}  // namespace lirvox::tools
