// Lookup, hits and vote of one capture, against bare SQLite stepping of the same statement.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include "bench/GeneratedDatabase.h"
#include "lib/Hits.h"
#include "lib/HitsByTrack.h"
#include "lib/LirvoxDatabase.h"
#include "lib/TrackOrder.h"
#include "lib/Vote.h"

namespace lirvox::bench {
namespace {

constexpr std::int32_t kMinimumVotes = 30;

void lookup(benchmark::State& state) {
  const GeneratedDatabase& generated = GeneratedDatabase::shared();
  LirvoxDatabase database(generated.path());
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(database.selectFingerprints(generated.query()));
  }
}
BENCHMARK(lookup)->Unit(benchmark::kMicrosecond);

void lookupAndHits(benchmark::State& state) {
  const GeneratedDatabase& generated = GeneratedDatabase::shared();
  LirvoxDatabase database(generated.path());
  for ([[maybe_unused]] auto _ : state) {
    const auto rows = database.selectFingerprints(generated.query());
    benchmark::DoNotOptimize(formHits(rows ? &*rows : nullptr, generated.query()));
  }
}
BENCHMARK(lookupAndHits)->Unit(benchmark::kMicrosecond);

void hitsAndVote(benchmark::State& state) {
  const GeneratedDatabase& generated = GeneratedDatabase::shared();
  const auto rows = LirvoxDatabase(generated.path()).selectFingerprints(generated.query());
  for ([[maybe_unused]] auto _ : state) {
    const PassHits pass = formHits(rows ? &*rows : nullptr, generated.query());
    const HitsByTrack hits(pass);
    const VoteOutcome outcome = vote(hits, chooseTrackOrder(hits, kMinimumVotes).tracks);
    benchmark::DoNotOptimize(chooseResult(outcome.candidates, kMinimumVotes));
  }
  state.counters["rows"] = static_cast<double>(rows ? rows->rowCount() : 0);
}
BENCHMARK(hitsAndVote)->Unit(benchmark::kMicrosecond);

// Opens the file, prepares, steps through all rows reading their columns, and closes it.
std::int64_t sumOfRows(const std::string& path, const std::string& sql) {
  sqlite3* file = nullptr;
  sqlite3_stmt* statement = nullptr;
  std::int64_t sum = 0;
  if (sqlite3_open(path.c_str(), &file) == SQLITE_OK &&
      sqlite3_prepare_v2(file, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK) {
    while (sqlite3_step(statement) == SQLITE_ROW) {
      for (int column = 0; column < 3; ++column) sum += sqlite3_column_int(statement, column);
    }
  }
  sqlite3_finalize(statement);
  sqlite3_close(file);
  return sum;
}

void stepThrough(benchmark::State& state, GeneratedDatabase::Order order) {
  const GeneratedDatabase& generated = GeneratedDatabase::shared();
  const std::string sql = generated.statement(order);
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(sumOfRows(generated.path(), sql));
  }
}

void bareSqlite(benchmark::State& state) {
  stepThrough(state, GeneratedDatabase::Order::ascending);
}
BENCHMARK(bareSqlite)->Unit(benchmark::kMicrosecond);

void bareSqliteShuffled(benchmark::State& state) {
  stepThrough(state, GeneratedDatabase::Order::shuffled);
}
BENCHMARK(bareSqliteShuffled)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace lirvox::bench
