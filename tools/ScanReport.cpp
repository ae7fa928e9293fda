// Stretches of a recording as the program prints them.
#include "tools/ScanReport.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <iostream>

#include <nlohmann/json.hpp>

#include "tools/Console.h"
#include "tools/TextTable.h"

namespace lirvox::tools {
namespace {

using Json = nlohmann::ordered_json;

double rounded(double seconds) {
  return std::round(seconds * 100.0) / 100.0;
}

std::string decimal(double seconds) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.2f", seconds);
  return text.data();
}

}  // namespace

ScanReport::ScanReport(const std::string& path, const std::string& format)
    : titles_(path), format_(format) {
  if (format_ == "csv") {
    std::cout << "from,to,track_id,title,position,votes,windows\r\n" << std::flush;
  }
}

void ScanReport::stretch(const Stretch& stretch) const {
  if (format_ == "json") {
    printJson(stretch);
  } else if (format_ == "csv") {
    printCsv(stretch);
  } else {
    printText(stretch);
  }
  std::cout.flush();
}

void ScanReport::printText(const Stretch& stretch) const {
  std::cout << clockTime(stretch.from) << " - " << clockTime(stretch.to) << "  ";
  if (stretch.recognized) {
    std::cout << titles_.of(stretch.trackId) << " at " << clockTime(stretch.position) << " ("
              << counted(stretch.votes, "vote") << ")\n";
  } else {
    std::cout << "nothing recognized\n";
  }
}

void ScanReport::printJson(const Stretch& stretch) const {
  const auto known = [&](const Json& value) { return stretch.recognized ? value : Json(); };
  const Json json = {{"from", rounded(stretch.from)},
                     {"to", rounded(stretch.to)},
                     {"recognized", stretch.recognized},
                     {"track_id", known(stretch.trackId)},
                     {"title", known(titles_.of(stretch.trackId))},
                     {"position", known(rounded(stretch.position))},
                     {"votes", known(stretch.votes)},
                     {"windows", known(stretch.windows)}};
  // Titles are bytes, and need not be UTF-8.
  std::cout << json.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
}

void ScanReport::printCsv(const Stretch& stretch) const {
  std::cout << decimal(stretch.from) << ',' << decimal(stretch.to) << ',';
  if (stretch.recognized) {
    std::cout << stretch.trackId << ',' << quotedCell(titles_.of(stretch.trackId)) << ','
              << decimal(stretch.position) << ',' << stretch.votes << ',' << stretch.windows;
  } else {
    std::cout << ",,,,";
  }
  std::cout << "\r\n";
}

}  // namespace lirvox::tools
