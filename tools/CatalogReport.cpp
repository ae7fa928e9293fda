// What the program says of tracks and catalogues.
#include "tools/CatalogReport.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>

#include <nlohmann/json.hpp>

#include "tools/Console.h"
#include "tools/TextTable.h"

namespace lirvox::tools {
namespace {

using catalog::Duplicate;
using catalog::ListedTrack;
using Json = nlohmann::ordered_json;

// File names and titles are bytes, and need not be UTF-8.
void print(const Json& json) {
  std::cout << json.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
}

Json namesAsJson(const ListedTrack& track) {
  return {{"track_id", track.id},
          {"title", track.info.title},
          {"artist", track.info.artist},
          {"path", track.info.path},
          {"duration", track.info.durationInSeconds}};
}

Json asJson(const ListedTrack& track) {
  Json json = namesAsJson(track);
  json["rows"] = track.rows;
  json["held_rows"] = track.heldRows;
  return json;
}

void printCsv(const std::vector<ListedTrack>& tracks) {
  std::cout << "track_id,title,artist,path,duration,rows,held_rows\r\n";
  for (const ListedTrack& track : tracks) {
    std::cout << track.id << ',' << quotedCell(track.info.title) << ','
              << quotedCell(track.info.artist) << ',' << quotedCell(track.info.path) << ','
              << track.info.durationInSeconds << ',' << track.rows << ',' << track.heldRows
              << "\r\n";
  }
}

void printTable(const std::vector<ListedTrack>& tracks) {
  if (tracks.empty()) return;
  std::vector<std::vector<std::string>> rows = {
      {"ID", "LENGTH", "ROWS", "ARTIST", "TITLE", "PATH"}};
  for (const ListedTrack& track : tracks) {
    rows.push_back({std::to_string(track.id), clockTime(track.info.durationInSeconds),
                    std::to_string(track.rows), track.info.artist, track.info.title,
                    track.info.path});
  }
  std::cout << alignedLines(rows);
}

ListedTrack trackOf(std::int32_t id, const std::vector<ListedTrack>& tracks) {
  const auto track =
      std::lower_bound(tracks.begin(), tracks.end(), id,
                       [](const ListedTrack& a, std::int32_t wanted) { return a.id < wanted; });
  if (track != tracks.end() && track->id == id) return *track;
  ListedTrack unknown;
  unknown.id = id;
  return unknown;
}

std::string nameOf(const ListedTrack& track) {
  const std::string title = catalog::fullTitle(track.info);
  return std::to_string(track.id) + (title.empty() ? "" : " " + title);
}

// To a tenth of a second.
std::string preciseTime(double seconds) {
  const long long tenths = std::llround(std::abs(seconds) * 10.0);
  const char* const sign = seconds < 0 && tenths > 0 ? "-" : "";
  return sign + clockTime(static_cast<double>(tenths / 10)) + '.' + std::to_string(tenths % 10);
}

std::string percent(double share) {
  return std::to_string(std::lround(100.0 * share)) + " %";
}

constexpr std::array kRelations = {"same", "contains", "shares"};

const char* relationOf(const Duplicate& duplicate) {
  return kRelations.at(static_cast<std::size_t>(duplicate.relation));
}

Json asJson(const Duplicate& duplicate, const ListedTrack& track, const ListedTrack& other) {
  return {{"relation", relationOf(duplicate)},
          {"track_id", track.id},
          {"title", track.info.title},
          {"path", track.info.path},
          {"other_track_id", other.id},
          {"other_title", other.info.title},
          {"other_path", other.info.path},
          {"offset", duplicate.offsetInSeconds},
          {"seconds_in_common", duplicate.secondsInCommon},
          {"share_of_track", duplicate.shareOfTrack},
          {"share_of_other", duplicate.shareOfOther}};
}

}  // namespace

std::string CatalogReport::lines(const std::vector<ListedTrack>& tracks) {
  std::vector<std::vector<std::string>> rows;
  for (const ListedTrack& track : tracks) {
    rows.push_back({std::to_string(track.id), clockTime(track.info.durationInSeconds),
                    catalog::fullTitle(track.info), track.info.path});
  }
  return alignedLines(rows);
}

void CatalogReport::tracks(const std::vector<ListedTrack>& tracks) const {
  if (json()) {
    for (const ListedTrack& track : tracks) print(asJson(track));
  } else {
    format_ == "csv" ? printCsv(tracks) : printTable(tracks);
  }
}

void CatalogReport::changed(const std::vector<ListedTrack>& tracks) const {
  for (const ListedTrack& track : tracks) print(namesAsJson(track));
}

void CatalogReport::merged(const catalog::Merged& merged, std::size_t parts,
                           const std::string& output) const {
  if (json()) {
    print({{"database", output},
           {"parts", parts},
           {"tracks", merged.tracks},
           {"rows", merged.rows},
           {"same", merged.same},
           {"replaced", merged.replaced}});
    return;
  }
  std::cout << output << ": " << counted(merged.tracks, "track") << ", "
            << counted(merged.rows, "row") << " from " << counted(parts, "part") << "; "
            << merged.same << " in several parts, " << merged.replaced << " replaced\n";
}

void CatalogReport::verified(const catalog::Verification& verification,
                             const std::string& database) const {
  if (json()) {
    Json violations = Json::array();
    for (const auto& [what, count, example] : verification.violations) {
      violations.push_back({{"what", what}, {"count", count}, {"example", example}});
    }
    print({{"database", database},
           {"kind", verification.kind},
           {"sound", violations.empty()},
           {"violations", violations}});
    return;
  }
  for (const auto& [what, count, example] : verification.violations) {
    std::cout << database << ": " << what << ": " << count << (count == 1 ? " (" : " (such as ")
              << example << ")\n";
  }
  if (verification.violations.empty()) {
    std::cout << database << ": a sound " << verification.kind << '\n';
  }
}

void CatalogReport::duplicates(const std::vector<Duplicate>& duplicates,
                               const std::vector<ListedTrack>& tracks) const {
  std::vector<std::vector<std::string>> rows = {
      {"TRACK", "", "OTHER", "OFFSET", "IN COMMON", "OF TRACK", "OF OTHER"}};
  for (const Duplicate& duplicate : duplicates) {
    const ListedTrack track = trackOf(duplicate.track, tracks);
    const ListedTrack other = trackOf(duplicate.other, tracks);
    if (json()) {
      print(asJson(duplicate, track, other));
      continue;
    }
    rows.push_back({nameOf(track), relationOf(duplicate), nameOf(other),
                    preciseTime(duplicate.offsetInSeconds), clockTime(duplicate.secondsInCommon),
                    percent(duplicate.shareOfTrack), percent(duplicate.shareOfOther)});
  }
  if (rows.size() > 1) std::cout << alignedLines(rows);
}

}  // namespace lirvox::tools
