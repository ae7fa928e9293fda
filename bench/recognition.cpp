// How much is recognised, and how much is answered falsely, for ways to build a database.
//
//   lirvox_recognition [--excerpts N] [--seed N] [--minimum N,N,...] [--seconds S,S,...] MUSIC...
//
// Builds one database of the music for each way, cuts random five-second excerpts, clean
// and in pink noise 10 dB below the music, and looks them up: in the whole database, and
// with the rows of the excerpt's own track left out, when every answer is false. With
// --seconds, builds one database in the default way and cuts excerpts of each length, at
// the same places.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <unistd.h>

#include "catalog/Catalog.h"
#include "catalog/CatalogSummary.h"
#include "catalog/TrackFingerprinter.h"
#include "lib/Hits.h"
#include "lib/LirvoxDatabase.h"
#include "tools/AudioDecoder.h"
#include "tools/Console.h"
#include "tools/Degradation.h"
#include "tools/FileList.h"
#include "tools/Trial.h"

using namespace lirvox;
using namespace lirvox::tools;

namespace {

using Samples = std::vector<std::int32_t>;

constexpr double kRate = 11025.0;
constexpr double kShortestTrackInSeconds = 20.0;

struct Track {
  std::string path;
  Samples samples;
};

struct Excerpt {
  std::size_t track;
  std::size_t start;
  std::vector<QueryHash> hashes;
};

struct Way {
  const char* name;
  catalog::CatalogOptions options;
};

std::vector<Track> readTracks(const std::vector<std::string>& paths) {
  std::size_t failed = 0;
  std::vector<Track> tracks;
  for (const ListedFile& file : listFiles(paths, failed)) {
    Samples samples;
    try {
      readAudio(file.path, [&](const std::int32_t* words, std::size_t count) {
        samples.insert(samples.end(), words, words + count);
        return true;
      });
    } catch (const AudioError&) {
      continue;
    }
    if (static_cast<double>(samples.size()) > kShortestTrackInSeconds * kRate)
      tracks.push_back({file.path, std::move(samples)});
  }
  return tracks;
}

void judge(const Excerpt& excerpt, LirvoxDatabase& database, std::int32_t minimum, Rate& rate) {
  const auto rows = database.selectFingerprints(excerpt.hashes);
  const PassHits pass = formHits(rows ? &*rows : nullptr, excerpt.hashes);
  judge(pass,
        {static_cast<std::int32_t>(excerpt.track + 1), static_cast<double>(excerpt.start) / kRate},
        minimum, rate);
}

void build(const std::string& path, const std::vector<Track>& tracks, const Way& way) {
  std::filesystem::remove(path);
  catalog::Catalog catalog(path, way.options);
  catalog::TrackFingerprinter fingerprinter(catalog.rowRule());
  for (const Track& track : tracks) {
    fingerprinter.add(track.samples.data(), track.samples.size());
    const double seconds = static_cast<double>(track.samples.size()) / kRate;
    catalog.add({{track.path, {}, track.path, seconds}, {}, fingerprinter.finish()});
  }
  catalog.commit();
}

struct Trial {
  std::vector<Excerpt> clean;
  std::vector<Excerpt> noisy;
};

// Places that leave room for `longest` seconds; each with a noise of its own.
Trial cut(const std::vector<Track>& tracks, int count, unsigned seed, double seconds,
          double longest) {
  std::mt19937 random(seed);
  Trial trial;
  for (int i = 0; i < count; ++i) {
    const std::size_t track = random() % tracks.size();
    const Samples& all = tracks[track].samples;
    const std::size_t start = random() % (all.size() - static_cast<std::size_t>(longest * kRate));
    const auto begin = all.begin() + static_cast<std::ptrdiff_t>(start);
    const Samples samples(begin, begin + static_cast<std::ptrdiff_t>(seconds * kRate));
    std::mt19937 noise(static_cast<unsigned>(random()));
    trial.clean.push_back({track, start, hashesOf(samples)});
    trial.noisy.push_back(
        {track, start,
         hashesOf(wordsOf(withPinkNoise({samples.begin(), samples.end()}, 10.0, noise)))});
  }
  return trial;
}

struct Rates {
  Rate clean;
  Rate noisy;
};

Rates judge(const Trial& trial, LirvoxDatabase& database, std::int32_t minimum) {
  Rates rates;
  for (const Excerpt& excerpt : trial.clean) judge(excerpt, database, minimum, rates.clean);
  for (const Excerpt& excerpt : trial.noisy) judge(excerpt, database, minimum, rates.noisy);
  return rates;
}

void print(const Rates& rates, std::size_t excerpts) {
  const double percent = 100.0 / static_cast<double>(excerpts);
  for (const Rate& rate : {rates.clean, rates.noisy}) {
    std::printf(" %6.1f %6.1f %6.1f %6.1f", rate.right * percent, rate.rightPlace * percent,
                rate.wrong * percent, rate.absentAnswered * percent);
  }
}

void printHeading(const char* rows) {
  std::printf("\n%-34s %27s %27s\n%-34s", "", "clean, %", "pink noise 10 dB, %", rows);
  for (int i = 0; i < 2; ++i) std::printf(" %6s %6s %6s %6s", "right", "place", "wrong", "absent");
}

std::string databasePath() {
  return (std::filesystem::temp_directory_path() /
          ("lirvox-recognition-" + std::to_string(::getpid()) + ".sqlite"))
      .string();
}

void run(const Way& way, const std::vector<Track>& tracks, const Trial& trial,
         std::int32_t minimum) {
  const std::string path = databasePath();
  build(path, tracks, way);
  const catalog::CatalogSummary summary = catalog::summarize(path);
  LirvoxDatabase database(path);
  const auto begin = std::chrono::steady_clock::now();
  const Rates rates = judge(trial, database, minimum);
  const std::chrono::duration<double, std::milli> spent = std::chrono::steady_clock::now() - begin;
  std::printf("%-34s", way.name);
  print(rates, trial.clean.size());
  std::printf(" %8.2f %8.2f\n", static_cast<double>(summary.rows) * 15.5 / summary.hours / 1e6,
              spent.count() / static_cast<double>(trial.clean.size() + trial.noisy.size()));
  std::fflush(stdout);
  std::filesystem::remove(path);
}

const Way kWays[] = {
    {"1 alignment, all rows", {1, 0, 0.0}},
    {"1 alignment, common hashes out", {1, 0, 5.0}},
    {"2 alignments, all rows", {2, 0, 0.0}},
    {"2 alignments, common hashes out", {2, 0, 5.0}},
    {"4 alignments, common hashes out", {4, 0, 3.0}},
    {"best 200,000 rows/h of 8", {8, 200'000, 20.0}},
    {"best 320,000 rows/h of 2", {2, 320'000, 20.0}},
    {"best 320,000 rows/h of 4", {4, 320'000, 20.0}},
    {"best 320,000 rows/h of 8 (default)", {}},
};

struct Options {
  int excerpts = 200;
  unsigned seed = 1;
  std::vector<std::int32_t> minimums = {30};
  std::vector<double> seconds;
  std::vector<std::string> music;
};

void compareWays(const std::vector<Track>& tracks, const Options& options) {
  const Trial trial = cut(tracks, options.excerpts, options.seed, 5.0, 5.0);
  for (const std::int32_t minimum : options.minimums) {
    printHeading(("minimum " + std::to_string(minimum)).c_str());
    std::printf(" %8s %8s\n", "MB/hour", "ms");
    for (const Way& way : kWays) run(way, tracks, trial, minimum);
  }
}

void compareLengths(const std::vector<Track>& tracks, const Options& options) {
  const std::string path = databasePath();
  build(path, tracks, {"default", {}});
  LirvoxDatabase database(path);
  printHeading("seconds, minimum");
  std::printf("\n");
  const double longest = *std::max_element(options.seconds.begin(), options.seconds.end());
  for (const double seconds : options.seconds) {
    const Trial trial = cut(tracks, options.excerpts, options.seed, seconds, longest);
    for (const std::int32_t minimum : options.minimums) {
      std::printf("%8.1f %-25d", seconds, minimum);
      print(judge(trial, database, minimum), trial.clean.size());
      std::printf("\n");
      std::fflush(stdout);
    }
  }
  std::filesystem::remove(path);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("How much is recognised, and how much answered falsely");
  Options options;
  app.add_option("--excerpts", options.excerpts, "Number of excerpts")->capture_default_str();
  app.add_option("--seed", options.seed, "Seed of places and noise")->capture_default_str();
  app.add_option("--minimum", options.minimums, "Votes that a result must exceed")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->capture_default_str();
  app.add_option("--seconds", options.seconds, "Lengths to compare, up to 19")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->check(CLI::Range(0.5, 19.0));
  app.add_option("MUSIC", options.music, "Files and folders")->required();
  CLI11_PARSE(app, argc, argv);

  const std::vector<Track> tracks = readTracks(options.music);
  if (tracks.empty()) {
    complain("no track of more than 20 seconds there");
    return 1;
  }
  std::printf("%zu tracks, %d excerpts, seed %u\n", tracks.size(), options.excerpts, options.seed);
  options.seconds.empty() ? compareWays(tracks, options) : compareLengths(tracks, options);
}
