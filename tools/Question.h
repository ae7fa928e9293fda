// A question before anything is lost.
#pragma once

#include <string>

#include "tools/CommandLine.h"

namespace lirvox::tools {

/// What a person said, or could not say.
enum class Consent { yes, no, nobodyToAsk };

/// Asks `question` and waits for the answer; anything but yes is no. With `answeredYes`,
/// or without a terminal on the standard input stream, it does not ask; in the latter
/// case it complains that only --yes goes on.
Consent ask(const std::string& question, bool answeredYes);

/// The option --yes.
Option yesOption(bool& yes);

}  // namespace lirvox::tools
