// Completion in fish.
#include "tools/Completion.h"
#include "tools/OptionText.h"

namespace lirvox::tools {
namespace {

std::string quoted(const std::string& text) {
  return '\'' + escaped(text, "'\\") + '\'';
}

std::string values(const Option& option) {
  std::string choices;
  for (const std::string& choice : option.choices) choices += (choices.empty() ? "" : " ") + choice;
  if (!choices.empty()) return " -x -a " + quoted(choices);
  switch (offeredFor(option)) {
    case Offered::files:
      return " -r -F";
    case Offered::folders:
      return " -x -a '(__fish_complete_directories)'";
    case Offered::nothing:
      break;
  }
  return " -x";
}

std::string names(const Option& option) {
  std::string text;
  for (const std::string& name : namesOf(option)) {
    const bool isLong = name.rfind("--", 0) == 0;
    text += isLong ? " -l " + name.substr(2) : " -s " + name.substr(1);
  }
  return text;
}

std::string argument(const Option& option) {
  switch (offeredFor(option)) {
    case Offered::files:
      return " -F";
    case Offered::folders:
      return " -a '(__fish_complete_directories)'";
    case Offered::nothing:
      break;
  }
  return {};
}

std::string line(const std::string& condition, const Option& option) {
  const std::string start = "complete -c lirvox -n " + quoted(condition);
  if (isArgument(option)) {
    const std::string offered = argument(option);
    return offered.empty() ? "" : start + offered + '\n';
  }
  return start + names(option) + (isSwitch(option) ? "" : values(option)) + " -d " +
         quoted(option.help) + '\n';
}

}  // namespace

std::string fishCompletion(const Program& program) {
  std::string text = "# fish completion for lirvox\ncomplete -c lirvox -f\n";
  const std::string first = "__fish_use_subcommand";
  text += line(first, helpOption());
  text += "complete -c lirvox -n " + first + " -l version -d 'Print the version and exit'\n";
  for (const Command& command : program.commands) {
    text += "complete -c lirvox -n " + first + " -a " + command.name + " -d " +
            quoted(command.summary) + '\n';
  }
  for (const Command& command : program.commands) {
    const std::string chosen = "__fish_seen_subcommand_from " + command.name;
    for (const Option& option : command.options) text += line(chosen, option);
    text += line(chosen, helpOption());
  }
  return text;
}

}  // namespace lirvox::tools
