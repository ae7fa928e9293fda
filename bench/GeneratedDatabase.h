// A database of plausible rows for benchmarks.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "lib/Landmark.h"

namespace lirvox::bench {

/// Rows of generated tunes, each followed by copies whose frequencies and times are moved, so
/// that the hashes are spread as those of many tracks. One of them is what the query asks for.
///
/// LIRVOX_BENCH_ROWS sets the number of rows (default 2,000,000). The file lies in the folder for
/// temporary files and is used again by the next run that wants as many.
class GeneratedDatabase {
 public:
  /// Made on first use.
  static const GeneratedDatabase& shared();
  /// The path of the file, which is made when it is not there.
  static std::string file();

  const std::string& path() const { return path_; }
  /// The hashes of a 5 s capture, four shifts, out of the middle of track 1.
  const std::vector<QueryHash>& query() const { return query_; }
  enum class Order { ascending, shuffled };
  /// The statement that looks them up, each distinct pair once.
  std::string statement(Order order) const;

 private:
  GeneratedDatabase();

  std::string path_;
  std::vector<QueryHash> query_;
};

}  // namespace lirvox::bench
