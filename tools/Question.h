// A question before anything is lost.
#pragma once

#include <optional>
#include <string>

#include "tools/CommandLine.h"

namespace lirvox::tools {

/// Asks `question` and waits for the answer; anything but yes is no. With `answeredYes`,
/// or without a terminal on the standard input stream, it does not ask; in the latter
/// case it complains that only --yes goes on. None if the answer is yes, else the exit
/// status with which nothing is changed.
std::optional<ExitStatus> refused(const std::string& question, bool answeredYes);

/// The option --yes.
Option yesOption(bool& yes);

}  // namespace lirvox::tools
