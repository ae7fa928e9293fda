// An examination in words and in figures.
#include "tools/Explanation.h"

#include <algorithm>
#include <iomanip>
#include <map>
#include <ostream>

#include <nlohmann/json.hpp>

#include "tools/Console.h"

namespace lirvox::tools {
namespace {

using Json = nlohmann::ordered_json;

// The candidates by their tracks: a track is visited once.
std::map<std::int32_t, const LirvoxResult*> candidatesOf(const Decision& decision) {
  std::map<std::int32_t, const LirvoxResult*> candidates;
  for (const LirvoxResult& one : decision.votes.candidates) {
    candidates[one.result_id.intValue()] = &one;
  }
  return candidates;
}

std::size_t knownHashes(const Examination& examined) {
  return examined.rows() ? examined.rows()->size() : 0;
}

std::size_t rowCount(const Examination& examined) {
  return examined.rows() ? examined.rows()->rowCount() : 0;
}

const char* aimName(OrderAim aim) {
  switch (aim) {
    case OrderAim::leaderWins:
      return "leader-wins";
    case OrderAim::copyWins:
      return "copy-wins";
    case OrderAim::silence:
      return "silence";
    case OrderAim::none:
      break;
  }
  return "none";
}

const char* aimText(OrderAim aim) {
  switch (aim) {
    case OrderAim::leaderWins:
      return "chosen so that the best aligned track wins";
    case OrderAim::copyWins:
      return "the best aligned first, as copies hide each other";
    case OrderAim::silence:
      return "chosen so that nothing wins";
    case OrderAim::none:
      break;
  }
  return "the best aligned first, as no order serves";
}

// The end of a line of either table: what a track gets, or would get, and where.
void printRow(std::ostream& out, const std::string& votes, const std::string& place,
              std::int32_t hits, const std::string& title) {
  out << std::setw(7) << votes << std::setw(10) << place << std::setw(7) << hits << "  " << title
      << '\n';
}

void printRest(std::ostream& out, std::size_t count, std::size_t shown) {
  if (count > shown) out << "        and " << count - shown << " more\n";
}

void printQuery(std::ostream& out, const Examination& examined) {
  out << std::fixed << std::setprecision(2) << "\nSound:    " << examined.seconds() << " s, "
      << examined.blocks() << " whole blocks analysed\nHashes:   " << examined.hashCount() << " (";
  for (std::size_t shift = 0; shift < examined.hashesByShift().size(); ++shift) {
    out << (shift == 0 ? "shift " : ", ") << shift << ": "
        << examined.hashesByShift()[shift].size();
  }
  out << "), " << examined.distinctHashCount() << " distinct\n";
}

void printRanking(std::ostream& out, const Explanation& of, std::size_t rows) {
  const TrackStatistics& statistics = *of.examined.statistics();
  const auto& tracks = of.examined.decision()->hits.tracks();
  out << "\nBest aligned tracks, by the most of their own hits at one offset:\n"
         "  rank  most  votes        at   hits  title (votes: hits in a window of three offsets)\n";
  const std::size_t shown = std::min(rows, tracks.size());
  for (std::size_t i = 0; i < shown; ++i) {
    const std::size_t track = statistics.ranking()[i];
    out << std::setw(6) << i + 1 << std::setw(6) << of.examined.ownPeak(track);
    printRow(out, std::to_string(statistics[track].count),
             clockTime(secondsOf(DecimalString(of.examined.ownOffset(track)))),
             tracks[track].hitCount(), of.titles.of(tracks[track].id.intValue()));
  }
  printRest(out, tracks.size(), shown);
  const LeaderStanding standing(statistics, of.examined.minimum());
  if (standing.fourth() == 0) return;
  out << "  Behind rank 1 the third most votes are " << standing.fourth() << " (the fourth best)";
  if (standing.seventeenth() > 0) {
    out << ", the 16th most " << standing.seventeenth() << " (the 17th best)";
  }
  out << '\n';
}

// Visits that are no candidates count nothing; the winner's is marked, and always shown.
void printVisits(std::ostream& out, const Explanation& of, std::size_t rows) {
  const Decision& decision = *of.examined.decision();
  const auto candidates = candidatesOf(decision);
  out << "\nOrder of the visits, " << aimText(decision.order.aim)
      << ":\n visit  votes        at   hits  title (- is no candidate yet)\n";
  std::size_t shown = 0;
  for (std::size_t i = 0; i < decision.order.tracks.size(); ++i) {
    const HitsByTrack::Track& track = decision.hits.tracks()[decision.order.tracks[i]];
    const bool isWinner = decision.result && decision.result->result_id == track.id;
    if (shown >= rows && !isWinner) continue;
    const auto found = candidates.find(track.id.intValue());
    const LirvoxResult* const candidate = found == candidates.end() ? nullptr : found->second;
    out << std::setw(6) << i + 1;
    printRow(out, candidate ? candidate->result_count.string() : "-",
             candidate ? clockTime(secondsOf(candidate->result_time)) : "-", track.hitCount(),
             of.titles.of(track.id.intValue()) + (isWinner ? "  <- wins" : ""));
    ++shown;
  }
  printRest(out, decision.order.tracks.size(), shown);
}

Json queryJson(const Examination& examined) {
  Json shifts;
  for (const auto& hashes : examined.hashesByShift()) shifts.push_back(hashes.size());
  return {{"seconds", examined.seconds()},
          {"blocks", examined.blocks()},
          {"hashes", examined.hashCount()},
          {"hashes_by_shift", shifts},
          {"distinct_hashes", examined.distinctHashCount()},
          {"known_hashes", knownHashes(examined)},
          {"rows", rowCount(examined)},
          {"hits", examined.decision()->pass.hits.size()},
          {"tracks", examined.decision()->hits.tracks().size()}};
}

// What decides whether the best aligned track stands out.
Json standingJson(const Examination& examined) {
  if (!examined.statistics()) return nullptr;
  const LeaderStanding standing(*examined.statistics(), examined.minimum());
  return {{"leader_votes", standing.count()},
          {"fourth_votes", standing.fourth()},
          {"seventeenth_votes", standing.seventeenth()}};
}

Json visitsJson(const Explanation& of) {
  const Decision& decision = *of.examined.decision();
  const auto candidates = candidatesOf(decision);
  Json visits = Json::array();
  for (const std::size_t track : decision.order.tracks) {
    const HitsByTrack::Track& hits = decision.hits.tracks()[track];
    const std::int32_t id = hits.id.intValue();
    Json visit = {{"track_id", id},
                  {"title", of.titles.of(id)},
                  {"hits", hits.hitCount()},
                  {"own_peak", of.examined.ownPeak(track)},
                  {"own_votes", (*of.examined.statistics())[track].count},
                  {"own_position", secondsOf(DecimalString(of.examined.ownOffset(track)))},
                  {"votes", nullptr},
                  {"position", nullptr}};
    const auto candidate = candidates.find(id);
    if (candidate != candidates.end()) {
      visit["votes"] = candidate->second->result_count.intValue();
      visit["position"] = secondsOf(candidate->second->result_time);
    }
    visits.push_back(std::move(visit));
  }
  return visits;
}

}  // namespace

void Explanation::print(std::ostream& out, std::size_t rows) const {
  out << "  " << verdict.sentence << ".\n";
  printQuery(out, examined);
  out << "Database: " << knownHashes(examined) << " of the distinct hashes, in "
      << rowCount(examined) << " rows\nHits:     " << examined.decision()->pass.hits.size()
      << " in " << examined.decision()->hits.tracks().size() << " tracks\nMinimum:  more than "
      << examined.minimum() << " votes\n";
  if (!examined.statistics()) return;
  printRanking(out, *this, rows);
  printVisits(out, *this, rows);
}

std::string Explanation::json() const {
  const Answer& answer = verdict.answer;
  const auto known = [&](const Json& value) { return answer.recognized ? value : Json(); };
  const Json json = {{"file", file},
                     {"recognized", answer.recognized},
                     {"track_id", known(answer.trackId)},
                     {"title", known(titles.of(answer.trackId))},
                     {"position", known(answer.positionInSeconds)},
                     {"votes", verdict.votes},
                     {"reason", verdict.reason},
                     {"explanation", verdict.sentence},
                     {"minimum_votes", examined.minimum()},
                     {"query", queryJson(examined)},
                     {"standing", standingJson(examined)},
                     {"order", aimName(examined.decision()->order.aim)},
                     {"visits", visitsJson(*this)}};
  // File names and titles are bytes, and need not be UTF-8.
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace lirvox::tools
