// Why something was or was not recognised.
#pragma once

#include <string>

#include "tools/Answer.h"
#include "tools/Examination.h"
#include "tools/Titles.h"

namespace lirvox::tools {

/// The outcome of an examination, and the reason for it.
struct Verdict {
  Answer answer;           ///< what the delegate is told
  std::int32_t votes = 0;  ///< of the answer
  std::string reason;      ///< for programs, as in "too-short"
  std::string sentence;    ///< for people, without a full stop
};

/// `examined` has had a database.
Verdict verdictOn(const Examination& examined, const Titles& titles);

/// "stands out", or by how much it does not: "40 votes, 1.33 times the 30 of the fourth best
/// (1.75 or more stand out)". Asks for statistics.
std::string standingText(const Examination& examined);

}  // namespace lirvox::tools
