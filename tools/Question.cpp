// A question before anything is lost.
#include "tools/Question.h"

#include <iostream>

#include <unistd.h>

#include "tools/Console.h"

namespace lirvox::tools {

Consent ask(const std::string& question, bool answeredYes) {
  if (answeredYes) return Consent::yes;
  if (::isatty(STDIN_FILENO) != 1) {
    complain(question + " Nobody is there to ask: --yes answers; nothing was changed");
    return Consent::nobodyToAsk;
  }
  std::cerr << question << " [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  if (answer == "y" || answer == "Y" || answer == "yes" || answer == "Yes") return Consent::yes;
  complain("nothing was changed");
  return Consent::no;
}

Option yesOption(bool& yes) {
  return {.names = "-y,--yes", .value = &yes, .help = "Do not ask"};
}

}  // namespace lirvox::tools
