// A question before anything is lost.
#include "tools/Question.h"

#include <iostream>

#include <unistd.h>

#include "tools/Console.h"

namespace lirvox::tools {

std::optional<ExitStatus> refused(const std::string& question, bool answeredYes) {
  if (answeredYes) return std::nullopt;
  if (::isatty(STDIN_FILENO) != 1) {
    complain(question + " Nobody is there to ask: --yes answers; nothing was changed");
    return exitUsage;
  }
  std::cerr << question << " [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  if (answer == "y" || answer == "Y" || answer == "yes" || answer == "Yes") return std::nullopt;
  complain("nothing was changed");
  return exitNotRecognized;
}

Option yesOption(bool& yes) {
  return {.names = "-y,--yes", .value = &yes, .help = "Do not ask"};
}

}  // namespace lirvox::tools
