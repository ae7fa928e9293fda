// A database of plausible rows for benchmarks.
#include "bench/GeneratedDatabase.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <set>
#include <stdexcept>
#include <tuple>
#include <utility>

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

#include "bench/ChipTune.h"
#include "catalog/TrackFingerprinter.h"
#include "lib/LirvoxMiniSpectogram.h"
#include "lib/LirvoxRecognize.h"
#include "lib/LirvoxUtilities.h"

namespace lirvox::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kSampleRate = 11025;
constexpr std::size_t kTrackInSamples = 240 * kSampleRate;
constexpr std::size_t kBlock = 2560;
constexpr std::uint32_t kTunes = 12;
constexpr std::int32_t kTargetBits = 12;  // of a hash: what lies below the anchor's bin
constexpr std::int32_t kLastBin = 255;

struct Row {
  std::int32_t track;
  QueryHash query;
};

std::size_t wantedRows() {
  std::size_t rows = 2'000'000;
  const char* const text = std::getenv("LIRVOX_BENCH_ROWS");
  if (!text) return rows;
  const char* const end = text + std::strlen(text);
  const auto [read, error] = std::from_chars(text, end, rows);
  if (error != std::errc() || read != end || rows == 0) {
    throw std::invalid_argument("LIRVOX_BENCH_ROWS is no number of rows");
  }
  return rows;
}

std::vector<QueryHash> fingerprint(std::uint32_t seed) {
  catalog::TrackFingerprinter fingerprinter({.alignments = 2, .rowsPerHour = 0});
  const std::vector<std::int32_t> words = chipTune(seed, kTrackInSamples);
  fingerprinter.add(words.data(), words.size());
  return fingerprinter.finish();
}

// The first tracks are the tunes, the others copies of them moved in frequency.
std::vector<Row> makeRows(std::size_t wanted) {
  std::vector<std::vector<QueryHash>> tunes;
  for (std::uint32_t seed = 1; seed <= kTunes; ++seed) tunes.push_back(fingerprint(seed));
  std::vector<Row> rows;
  std::mt19937 random(1);
  for (std::int32_t track = 1; rows.size() < wanted; ++track) {
    const auto number = static_cast<std::uint32_t>(track - 1);
    const auto shift = number < kTunes ? 0 : static_cast<std::int32_t>(random() % 64) - 32;
    for (const QueryHash& query : tunes[number % kTunes]) {
      const std::int32_t bin = (query.hash >> kTargetBits) + shift;
      if (bin < 0 || bin > kLastBin) continue;
      // Copies differ in time too, or all of them would vote for the same offset.
      const auto time = number < kTunes ? query.time : static_cast<std::int32_t>(random() % 10000);
      rows.push_back({track, {time, query.hash + (shift << kTargetBits)}});
    }
  }
  rows.resize(wanted);
  std::sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) {
    return std::tie(a.query.hash, a.track, a.query.time) <
           std::tie(b.query.hash, b.track, b.query.time);
  });
  return rows;
}

void write(const std::string& path, const std::vector<Row>& rows) {
  SQLite::Database file(path, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
  SQLite::Transaction transaction(file);
  file.exec(
      "CREATE TABLE db(track_id INTEGER NOT NULL, num1 INTEGER NOT NULL, num2 INTEGER NOT NULL,"
      " PRIMARY KEY(num2, track_id, num1)) WITHOUT ROWID");
  SQLite::Statement insert(file, "INSERT OR IGNORE INTO db VALUES(?, ?, ?)");
  for (const auto& [track, query] : rows) {
    SQLite::bind(insert, track, query.time, query.hash);
    insert.exec();
    insert.reset();
  }
  transaction.commit();
}

std::vector<QueryHash> captureOfTrackOne() {
  const std::vector<float> samples = chipTuneSamples(1, kTrackInSamples);
  const std::size_t begin = 100 * kSampleRate;
  LirvoxAudioFFT fft;
  const auto history = LirvoxUtilities::initHistoryInfo();
  for (std::size_t at = begin; at + kBlock <= begin + 5 * kSampleRate; at += kBlock) {
    LirvoxMiniSpectogram::do_4_mini_specgrams(samples.data() + at, fft, *history);
  }
  return LirvoxRecognize::queryHashes(*history);
}

}  // namespace

const GeneratedDatabase& GeneratedDatabase::shared() {
  static const GeneratedDatabase database;
  return database;
}

GeneratedDatabase::GeneratedDatabase() : path_(file()), query_(captureOfTrackOne()) {}

std::string GeneratedDatabase::file() {
  const std::size_t rows = wantedRows();
  const fs::path path =
      fs::temp_directory_path() / ("lirvox-bench-" + std::to_string(rows) + ".sqlite");
  if (fs::exists(path)) return path;
  const std::string unfinished = path.string() + ".part";
  fs::remove(unfinished);
  try {
    write(unfinished, makeRows(rows));
    fs::rename(unfinished, path);
  } catch (...) {
    fs::remove(unfinished);
    throw;
  }
  return path;
}

std::string GeneratedDatabase::statement(Order order) const {
  std::set<std::pair<std::int32_t, std::int32_t>> pairs;
  for (const QueryHash& query : query_) pairs.emplace(query.hash, query.time);
  std::vector<std::int32_t> hashes;
  for (const auto& [hash, time] : pairs) hashes.push_back(hash);
  if (order == Order::shuffled) std::shuffle(hashes.begin(), hashes.end(), std::mt19937(1));
  std::string list;
  for (const std::int32_t hash : hashes) {
    if (!list.empty()) list += ',';
    list += std::to_string(hash);
  }
  return "SELECT track_id AS id, num1 AS  time_in_track, num2 AS hash FROM db WHERE num2 IN (" +
         list + ")";
}

}  // namespace lirvox::bench
