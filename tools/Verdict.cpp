// Why something was or was not recognised.
#include "tools/Verdict.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "lib/LirvoxSettings.h"
#include "tools/Console.h"

namespace lirvox::tools {
namespace {

struct Reason {
  std::string name;
  std::string sentence;
};

std::string decimal(double value, int digits) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.*f", digits, value);
  return text.data();
}

std::string quoted(const std::string& title) {
  return '"' + shortened(title, 40) + '"';
}

std::int32_t leaderId(const Examination& examined) {
  return examined.decision()->hits.tracks()[examined.statistics()->leader()].id.intValue();
}

LeaderStanding standingOf(const Examination& examined) {
  return {*examined.statistics(), examined.minimum()};
}

// "9.10 times the 10 of the fourth best"
std::string times(std::int32_t count, std::int32_t other, const std::string& place) {
  return decimal(static_cast<double>(count) / other, 2) + " times the " + std::to_string(other) +
         " of the " + place;
}

// What a query without hits lacks.
Reason whyNoHits(const Examination& examined) {
  if (examined.blocks() == 0) {
    const double block = static_cast<double>(LirvoxSettings::minimumBufferSizeForMiniSpectogram()) /
                         LirvoxSettings::settingSampleRate();
    return {"too-short", "Too short: " + decimal(examined.seconds(), 2) +
                             " s are less than one block of " + decimal(block, 2) + " s"};
  }
  if (examined.isSilent()) return {"silence", "Silence: every sample is 0"};
  if (examined.hashCount() == 0) {
    return {"no-landmarks", "Nothing in the sound stands out: no two peaks make a landmark"};
  }
  if (!examined.rows()) return {"database-failure", "The database could not be read"};
  return {"no-hash-in-database", "No hash in the database: none of the " +
                                     std::to_string(examined.distinctHashCount()) +
                                     " distinct ones is there"};
}

// The candidate that the vote puts first, whether or not that makes it the result.
const LirvoxResult& firstAsText(const std::vector<LirvoxResult>& candidates) {
  return *std::max_element(
      candidates.begin(), candidates.end(),
      [](const LirvoxResult& a, const LirvoxResult& b) { return a.result_count < b.result_count; });
}

Reason whyHidden(const Examination& examined, const Titles& titles) {
  const LirvoxResult& first = firstAsText(examined.decision()->votes.candidates);
  return {"hidden-in-the-vote",
          quoted(titles.of(leaderId(examined))) + " stands out with " +
              counted(standingOf(examined).count(), "vote") +
              ", but no order of the tracks lets it win: " + "counts are compared as text, and \"" +
              first.result_count.string() + "\" of " +
              quoted(titles.of(first.result_id.intValue())) + " comes last"};
}

Reason whyNoResult(const Examination& examined, const Titles& titles) {
  const LeaderStanding standing = standingOf(examined);
  const std::string leader = quoted(titles.of(leaderId(examined)));
  if (!standing.exceedsMinimum()) {
    return {"too-few-votes",
            "Votes " + std::to_string(standing.count()) + " do not exceed the minimum " +
                std::to_string(examined.minimum()) + ": " + leader + " is the best aligned track"};
  }
  if (examined.decision()->votes.candidates.empty()) {
    return {"no-candidate", "No offset has the 5 votes that make a candidate"};
  }
  if (!standing.standsOut()) {
    return {"does-not-stand-out",
            "Leader does not stand out: " + leader + " has " + standingText(examined)};
  }
  return whyHidden(examined, titles);
}

// How the winner has come to another count than its own.
std::string helpText(const Examination& examined, const LirvoxResult& result) {
  if (result.result_time.intValue() != examined.ownOffset(examined.statistics()->leader())) {
    return "; other tracks draw the count to another place of it";
  }
  const std::int32_t others = result.result_count.intValue() - standingOf(examined).count();
  if (others == 0) return "";
  return "; tracks visited before it " + std::string(others > 0 ? "add " : "take ") +
         counted(std::abs(others), "vote");
}

Reason whyRecognized(const Examination& examined, const Titles& titles) {
  const Decision& decision = *examined.decision();
  const std::int32_t id = decision.result->result_id.intValue();
  if (id == 0) {
    return {"track-0", "Track 0 has won, and cannot be told from nothing: its id must not be 0"};
  }
  const bool isLeader = id == leaderId(examined);
  const std::string leader = quoted(titles.of(leaderId(examined)));
  if (!standingOf(examined).standsOut()) {
    return {"nobody-silences",
            "Recognised, but it does not stand out: no order of the tracks was found under which "
            "nobody wins; " +
                (isLeader ? "it has " : leader + " has ") + standingText(examined)};
  }
  if (!isLeader) {
    return {"copy", "Recognised, but " + leader +
                        " is aligned better: they hide each other, as "
                        "copies of one recording do"};
  }
  return {"stands-out",
          "It stands out: " + standingText(examined) + helpText(examined, *decision.result)};
}

Reason reasonFor(const Examination& examined, const Titles& titles) {
  if (!examined.statistics()) return whyNoHits(examined);
  return examined.decision()->result ? whyRecognized(examined, titles)
                                     : whyNoResult(examined, titles);
}

}  // namespace

std::string standingText(const Examination& examined) {
  const LeaderStanding standing = standingOf(examined);
  const std::int32_t count = standing.count();
  const std::int32_t fourth = standing.fourth();
  const std::int32_t seventeenth = standing.seventeenth();
  std::string text = counted(count, "vote") + ", ";
  if (fourth == 0) return text + "and there is no fourth best track";
  text += times(count, fourth, "fourth best") + " (" + decimal(LeaderStanding::kTimesFourth, 2) +
          " or more stand out)";
  if (count >= LeaderStanding::kTimesFourth * fourth || seventeenth == 0) return text;
  return text + " and " + times(count, seventeenth, "17th") + " (" +
         decimal(LeaderStanding::kTimesSeventeenth, 0) + ")";
}

Verdict verdictOn(const Examination& examined, const Titles& titles) {
  Verdict verdict;
  const auto& result = examined.decision()->result;
  if (result && result->result_id.intValue() != 0) {
    verdict.answer = {.recognized = true,
                      .trackId = result->result_id.intValue(),
                      .positionInSeconds = secondsOf(result->result_time)};
    verdict.votes = result->result_count.intValue();
  }
  const Reason reason = reasonFor(examined, titles);
  verdict.reason = reason.name;
  verdict.sentence = reason.sentence;
  return verdict;
}

}  // namespace lirvox::tools
