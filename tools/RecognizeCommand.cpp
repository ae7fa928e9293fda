// lirvox recognize: which track a file is, and where in it.
#include <cstdint>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "catalog/CatalogSummary.h"
#include "lib/LirvoxDatabase.h"
#include "lib/LirvoxSettings.h"
#include "tools/AudioDecoder.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/DatabaseCheck.h"
#include "tools/FileRecognizer.h"
#include "tools/QueryPass.h"

namespace lirvox::tools {
namespace {

struct Options {
  std::string database;
  double start = 0.0;
  double seconds = LirvoxSettings::recordTime();
  std::int32_t minimumVotes = LirvoxSettings::minimumFindedCntDefault();
  std::string format = "text";
  std::vector<std::string> files;
};

struct Finding {
  Answer answer;
  std::string title;
  std::int32_t votes = 0;
};

// The samples from `start` on, `seconds` of them or as many as there are.
std::vector<std::int32_t> readExcerpt(const std::string& file, double start, double seconds) {
  const auto rate = static_cast<double>(LirvoxSettings::sampleRate());
  auto skip = static_cast<std::size_t>(start * rate);
  const auto wanted = static_cast<std::size_t>(seconds * rate);
  std::vector<std::int32_t> samples;
  readAudio(file, [&](const std::int32_t* words, std::size_t count) {
    const std::size_t skipped = std::min(skip, count);
    skip -= skipped;
    const std::size_t taken = std::min(count - skipped, wanted - samples.size());
    samples.insert(samples.end(), words + skipped, words + skipped + taken);
    return samples.size() < wanted;
  });
  if (samples.empty()) throw AudioError(AudioError::Kind::noAudio, "no audio at that place");
  return samples;
}

// The delegate does not tell the votes, so the pieces of the pass are asked for them.
std::int32_t votesOf(const std::vector<std::int32_t>& samples, const Options& options) {
  QueryPass pass;
  pass.add(samples.data(), samples.size());
  std::vector<QueryHash> hashes;
  for (const auto& shift : pass.hashesByShift())
    hashes.insert(hashes.end(), shift.begin(), shift.end());
  LirvoxDatabase database(options.database);
  const auto result = lookUp(database, hashes, options.minimumVotes);
  return result ? result->result_count.intValue() : 0;
}

nlohmann::ordered_json asJson(const std::string& file, const Finding& finding) {
  nlohmann::ordered_json json = {{"file", file}, {"recognized", finding.answer.recognized}};
  if (finding.answer.recognized) {
    json["track_id"] = finding.answer.trackId;
    json["title"] = finding.title;
    json["position"] = finding.answer.positionInSeconds;
  } else {
    // One by one: each new member may move the ones before.
    json["track_id"] = nullptr;
    json["title"] = nullptr;
    json["position"] = nullptr;
  }
  json["votes"] = finding.votes;
  return json;
}

// File names are bytes, and need not be UTF-8.
void print(const nlohmann::ordered_json& json) {
  std::cout << json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << std::endl;
}

void printText(const std::string& file, const Finding& finding) {
  std::cout << file << ": ";
  if (finding.answer.recognized) {
    std::cout << finding.title << " at " << clockTime(finding.answer.positionInSeconds) << " ("
              << finding.votes << " votes)";
  } else {
    std::cout << "not recognized";
  }
  std::cout << std::endl;
}

void reportFailure(const std::string& file, const std::string& reason, const Options& options) {
  complain(file + ": " + reason);
  if (options.format != "json") return;
  auto json = asJson(file, {});
  json["error"] = reason;
  print(json);
}

int recognize(const Options& options) {
  if (!databaseIsUsable(options.database)) return exitDatabase;
  const auto titles = catalog::trackTitles(options.database);
  FileRecognizer recognizer(options.database, options.minimumVotes);
  bool recognizedAny = false;
  bool failedAny = false;
  for (const std::string& file : options.files) {
    try {
      const auto samples = std::make_shared<const std::vector<std::int32_t>>(
          readExcerpt(file, options.start, options.seconds));
      Finding finding{recognizer.recognize(samples), {}, 0};
      if (finding.answer.recognized) {
        recognizedAny = true;
        finding.votes = votesOf(*samples, options);
        const auto title = titles.find(finding.answer.trackId);
        finding.title = title == titles.end() ? "track " + std::to_string(finding.answer.trackId)
                                              : title->second;
      }
      options.format == "json" ? print(asJson(file, finding)) : printText(file, finding);
    } catch (const AudioError& error) {
      failedAny = true;
      reportFailure(file, error.what(), options);
    }
  }
  if (failedAny) return exitSomeFailed;
  return recognizedAny ? exitDone : exitNotRecognized;
}

}  // namespace

Command recognizeCommand() {
  const auto options = std::make_shared<Options>();
  return {
      .name = "recognize",
      .summary = "Say which track a file is, and where in it",
      .details =
          "JSON: one object per file and line, with file, recognized, track_id, title, position\n"
          "(seconds in the track at the excerpt's start) and votes.\n"
          "\n"
          "Examples:\n"
          "  lirvox recognize excerpt.ogg\n"
          "  lirvox recognize --start 60 --seconds 8 --format json film.mkv\n"
          "  some-recorder | lirvox recognize -",
      .options = {databaseOption(options->database),
                  {.names = "--start",
                   .value = &options->start,
                   .help = "Where the excerpt starts",
                   .unit = "SECONDS",
                   .range = {{0, 1e7}}},
                  {.names = "--seconds",
                   .value = &options->seconds,
                   .help = "Length of the excerpt",
                   .unit = "SECONDS",
                   .range = {{0.001, 3600}}},
                  {.names = "--min-votes",
                   .value = &options->minimumVotes,
                   .help = "Votes that a result must exceed",
                   .unit = "N",
                   .range = {{1, 1'000'000}}},
                  {.names = "--format",
                   .value = &options->format,
                   .help = "Output format",
                   .choices = {"text", "json"}},
                  {.names = "FILE",
                   .value = &options->files,
                   .help = "Sound or video files, *.dat recordings, or - for standard input",
                   .required = true}},
      .run = [options] { return recognize(*options); }};
}

}  // namespace lirvox::tools
