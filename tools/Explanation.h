// An examination in words and in figures.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include "tools/Examination.h"
#include "tools/Titles.h"
#include "tools/Verdict.h"

namespace lirvox::tools {

/// What is explained. Refers to what it is made of.
struct Explanation {
  const std::string& file;
  const Examination& examined;  // with a database
  const Titles& titles;
  const Verdict& verdict;

  /// For people; tables end after `rows` rows.
  void print(std::ostream& out, std::size_t rows) const;

  /// For programs: one JSON object, everything in it.
  std::string json() const;
};

}  // namespace lirvox::tools
