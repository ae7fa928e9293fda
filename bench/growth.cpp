// How lookup, vote and recognition change as a database grows.
//
//   lirvox_growth -d DATABASE [--tracks N,N,...] [--excerpts N] [--seed N] [--minimum N]
//                 [--page-size N]
//
// Takes the tracks of a database that `lirvox index` made, grows them to N tracks by copies whose
// frequencies and times are moved, and looks excerpts of the original files up, clean and in white
// noise 10 dB below the music: in the whole database, and with the rows of the excerpt's own track
// left out, when every answer is false. Prints one line of tab-separated figures for each N,
// which must not be below the number of tracks in the database.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>
#include <fcntl.h>
#include <unistd.h>

#include "catalog/HashCounts.h"
#include "lib/Decision.h"
#include "lib/LirvoxDatabase.h"
#include "tools/AudioDecoder.h"
#include "tools/Trial.h"

using namespace lirvox;

namespace {

namespace fs = std::filesystem;

constexpr double kSampleRate = 11025.0;
constexpr std::size_t kExcerpt = 5 * 11025;
constexpr int kColdLookups = 20;
constexpr std::int32_t kTargetBits = 12;  // of a hash: what lies below the anchor's bin
constexpr std::int32_t kBins = 256;

struct BaseTrack {
  std::string path;
  std::vector<QueryHash> rows;
};

struct Excerpt {
  tools::Truth truth;  // the same track in every grown database
  std::vector<QueryHash> hashes;
};

// A row as one number, in the order of the file.
std::uint64_t packRow(std::int32_t hash, std::int32_t track, std::int32_t time) {
  return static_cast<std::uint64_t>(hash) << 44 | static_cast<std::uint64_t>(track) << 24 |
         static_cast<std::uint64_t>(time);
}
std::int32_t hashOf(std::uint64_t row) {
  return static_cast<std::int32_t>(row >> 44);
}
std::int32_t trackOf(std::uint64_t row) {
  return static_cast<std::int32_t>(row >> 24 & 0xFFFFF);
}
std::int32_t timeOf(std::uint64_t row) {
  return static_cast<std::int32_t>(row & 0xFFFFFF);
}

// With the rows that count and those kept aside.
std::vector<BaseTrack> readBase(const std::string& path) {
  const SQLite::Database file(path);
  std::vector<BaseTrack> tracks;
  std::map<std::int32_t, std::size_t> places;
  SQLite::Statement names(file, "SELECT track_id, path FROM tracks ORDER BY track_id");
  while (names.executeStep()) {
    places.emplace(names.getColumn(0).getInt(), tracks.size());
    tracks.push_back({names.getColumn(1).getString(), {}});
  }
  SQLite::Statement rows(file,
                         "SELECT track_id, num1, num2 FROM db"
                         " UNION ALL SELECT track_id, num1, num2 FROM held");
  while (rows.executeStep()) {
    BaseTrack& track = tracks[places.at(rows.getColumn(0).getInt())];
    track.rows.push_back({rows.getColumn(1).getInt(), rows.getColumn(2).getInt()});
  }
  return tracks;
}

// Tracks 1 to `count`: the originals first, then copies a few bins higher or lower and up to
// 15 % faster or slower.
std::vector<std::uint64_t> grow(const std::vector<BaseTrack>& base, std::int32_t count,
                                std::mt19937& random) {
  std::vector<std::uint64_t> rows;
  for (std::int32_t track = 1; track <= count; ++track) {
    const auto original = static_cast<std::size_t>(track - 1) % base.size();
    const bool isCopy = static_cast<std::size_t>(track) > base.size();
    const std::int32_t distance = isCopy ? 1 + static_cast<std::int32_t>(random() % 24) : 0;
    const std::int32_t shift = random() % 2 == 0 ? distance : -distance;
    const double speed = isCopy ? 0.85 + 0.3 * static_cast<double>(random() % 1000) / 1000.0 : 1.0;
    for (const QueryHash& row : base[original].rows) {
      const std::int32_t bin = (row.hash >> kTargetBits) + shift;
      if (bin < 0 || bin >= kBins) continue;
      rows.push_back(packRow(row.hash + (shift << kTargetBits), track,
                             static_cast<std::int32_t>(std::lround(row.time / speed))));
    }
  }
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  return rows;
}

// As a catalogue does with its default rule.
void leaveOutCommonHashes(std::vector<std::uint64_t>& rows) {
  catalog::HashCounts counts(catalog::kHashes);
  for (const std::uint64_t row : rows) ++counts[static_cast<std::size_t>(hashOf(row))];
  const std::uint32_t limit = catalog::commonHashLimit(counts, {});
  std::erase_if(rows, [&](std::uint64_t row) {
    return counts[static_cast<std::size_t>(hashOf(row))] > limit;
  });
}

void write(const std::string& path, const std::vector<std::uint64_t>& rows, int pageSize) {
  fs::remove(path);
  SQLite::Database file(path, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
  file.exec("PRAGMA page_size = " + std::to_string(pageSize));
  file.exec("PRAGMA journal_mode = OFF");
  file.exec("PRAGMA synchronous = OFF");
  SQLite::Transaction transaction(file);
  file.exec(
      "CREATE TABLE db(track_id INTEGER NOT NULL, num1 INTEGER NOT NULL, num2 INTEGER NOT NULL,"
      " PRIMARY KEY(num2, track_id, num1)) WITHOUT ROWID");
  SQLite::Statement insert(file, "INSERT INTO db VALUES(?, ?, ?)");
  for (const std::uint64_t row : rows) {
    SQLite::bind(insert, trackOf(row), timeOf(row), hashOf(row));
    insert.exec();
    insert.reset();
  }
  transaction.commit();
}

std::vector<std::int32_t> readSamples(const std::string& path) {
  std::vector<std::int32_t> samples;
  tools::readAudio(path, [&](const std::int32_t* words, std::size_t count) {
    samples.insert(samples.end(), words, words + count);
    return true;
  });
  return samples;
}

std::vector<std::int32_t> withNoise(const std::vector<std::int32_t>& samples, double decibels,
                                    std::mt19937& random) {
  double energy = 0.0;
  for (const double sample : samples) energy += sample * sample;
  const double level = std::sqrt(energy / static_cast<double>(samples.size()));
  std::normal_distribution<double> noise(0.0, level * std::pow(10.0, -decibels / 20.0) + 1.0);
  std::vector<std::int32_t> mixed;
  for (const double sample : samples) {
    mixed.push_back(
        static_cast<std::int32_t>(std::clamp(sample + noise(random), -2147483648.0, 2147483647.0)));
  }
  return mixed;
}

struct Trial {
  std::vector<Excerpt> clean;
  std::vector<Excerpt> noisy;
};

// Each file is decoded once, for all of its excerpts.
Trial cut(const std::vector<BaseTrack>& base, int count, std::mt19937& random) {
  Trial trial;
  const int each = std::max(1, count / static_cast<int>(base.size()));
  for (std::size_t i = 0; i < base.size(); ++i) {
    const std::vector<std::int32_t> all = readSamples(base[i].path);
    if (all.size() <= 4 * kExcerpt) continue;
    for (int n = 0; n < each; ++n) {
      const auto start = static_cast<std::ptrdiff_t>(random() % (all.size() - kExcerpt));
      const std::vector<std::int32_t> samples(all.begin() + start,
                                              all.begin() + start + std::ptrdiff_t{kExcerpt});
      const tools::Truth truth = {static_cast<std::int32_t>(i + 1),
                                  static_cast<double>(start) / kSampleRate};
      trial.clean.push_back({truth, tools::hashesOf(samples)});
      trial.noisy.push_back({truth, tools::hashesOf(withNoise(samples, 10.0, random))});
    }
  }
  return trial;
}

// Processor time of this thread, which others on the machine do not add to.
double processorMilliseconds() {
  timespec now{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

struct Figures {
  tools::Rate rate;
  double lookup = 0.0;  // milliseconds in all
  double vote = 0.0;
  std::size_t rows = 0;  // in all
  std::size_t mostRows = 0;

  double percent(int count) const { return 100.0 * count / rate.trials; }
  double mean(double sum) const { return sum / rate.trials; }
};

Figures judge(const std::vector<Excerpt>& excerpts, LirvoxDatabase& database,
              std::int32_t minimum) {
  Figures figures;
  for (const Excerpt& excerpt : excerpts) {
    const double begin = processorMilliseconds();
    const auto rows = database.selectFingerprints(excerpt.hashes);
    const double found = processorMilliseconds();
    const Decision decision(rows ? &*rows : nullptr, excerpt.hashes, minimum);
    figures.vote += processorMilliseconds() - found;
    figures.lookup += found - begin;
    const std::size_t count = rows ? rows->rowCount() : 0;
    figures.rows += count;
    figures.mostRows = std::max(figures.mostRows, count);
    tools::judge(decision.pass, excerpt.truth, minimum, figures.rate);
  }
  return figures;
}

// What a lookup takes on the clock when nothing of the file is in memory.
double coldMilliseconds(const std::string& path, const std::vector<Excerpt>& excerpts) {
  double sum = 0.0;
  for (int i = 0; i < kColdLookups; ++i) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ::fdatasync(file);
    ::posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    ::close(file);
    LirvoxDatabase database(path);
    const auto begin = std::chrono::steady_clock::now();
    database.selectFingerprints(excerpts[static_cast<std::size_t>(i) % excerpts.size()].hashes);
    sum +=
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
  }
  return sum / kColdLookups;
}

// The database that is being measured: gigabytes, which an interrupted process takes away, too.
class GrownFile {
 public:
  GrownFile() {
    path();
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, end);
  }
  ~GrownFile() { ::unlink(path().c_str()); }
  GrownFile(const GrownFile&) = delete;
  GrownFile& operator=(const GrownFile&) = delete;

  static const std::string& path() {
    static const std::string path =
        fs::temp_directory_path() / ("lirvox-growth-" + std::to_string(::getpid()) + ".sqlite");
    return path;
  }

 private:
  static void end(int signal) {
    ::unlink(path().c_str());
    std::signal(signal, SIG_DFL);
    std::raise(signal);
  }
};

struct Plan {
  std::string database;
  std::vector<std::int32_t> sizes = {100, 300, 1000, 3000, 10000};
  int excerpts = 300;
  std::int32_t minimum = 30;
  unsigned seed = 1;
  int pageSize = 4096;
};

void run(std::int32_t tracks, const std::vector<BaseTrack>& base, const Trial& trial,
         const Plan& plan) {
  const GrownFile grown;
  const std::string& path = GrownFile::path();
  std::mt19937 random(plan.seed);
  std::vector<std::uint64_t> rows = grow(base, tracks, random);
  leaveOutCommonHashes(rows);
  write(path, rows, plan.pageSize);
  const std::size_t count = rows.size();
  rows = {};
  const double cold = coldMilliseconds(path, trial.clean);
  LirvoxDatabase database(path);
  judge(trial.clean, database, plan.minimum);  // warms the file
  const Figures clean = judge(trial.clean, database, plan.minimum);
  const Figures noisy = judge(trial.noisy, database, plan.minimum);
  std::printf("%d\t%zu\t%.1f\t%.0f\t%zu\t%.2f\t%.2f\t%.2f", tracks, count,
              static_cast<double>(fs::file_size(path)) / 1e6,
              clean.mean(static_cast<double>(clean.rows)), clean.mostRows, clean.mean(clean.lookup),
              clean.mean(clean.vote), cold);
  for (const Figures* figures : {&clean, &noisy}) {
    const tools::Rate& rate = figures->rate;
    std::printf("\t%.1f\t%.1f\t%.1f", figures->percent(rate.right), figures->percent(rate.wrong),
                figures->percent(rate.absentAnswered));
  }
  std::printf("\n");
  std::fflush(stdout);
}

void runAll(const Plan& plan) {
  const std::vector<BaseTrack> base = readBase(plan.database);
  if (base.empty()) throw std::invalid_argument(plan.database + " has no tracks");
  const std::int32_t smallest = *std::min_element(plan.sizes.begin(), plan.sizes.end());
  if (smallest < static_cast<std::int32_t>(base.size())) {
    throw std::invalid_argument(plan.database + " has " + std::to_string(base.size()) +
                                " tracks, which do not grow to " + std::to_string(smallest));
  }
  std::mt19937 random(plan.seed);
  const Trial trial = cut(base, plan.excerpts, random);
  std::printf(
      "tracks\trows\tMB\trows/query\tmost rows\tlookup ms\tvote ms\tcold ms\tright\twrong\tabsent"
      "\tnoisy right\tnoisy wrong\tnoisy absent\n");
  for (const std::int32_t size : plan.sizes) run(size, base, trial, plan);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("How lookup, vote and recognition change as a database grows");
  Plan plan;
  app.add_option("-d,--database", plan.database, "Database to grow")
      ->required()
      ->check(CLI::ExistingFile);
  app.add_option("--tracks", plan.sizes, "Numbers of tracks")->delimiter(',')->expected(1, -1);
  app.add_option("--excerpts", plan.excerpts, "Number of excerpts")->capture_default_str();
  app.add_option("--seed", plan.seed, "Seed of places, noise and copies")->capture_default_str();
  app.add_option("--minimum", plan.minimum, "Votes that a result must exceed")
      ->capture_default_str();
  app.add_option("--page-size", plan.pageSize, "Bytes of a page")
      ->check(CLI::IsMember(std::set<int>{512, 1024, 2048, 4096, 8192, 16384, 32768, 65536}))
      ->capture_default_str();
  CLI11_PARSE(app, argc, argv);

  try {
    runAll(plan);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
