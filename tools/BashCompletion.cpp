// Completion in bash.
#include "tools/Completion.h"
#include "tools/OptionText.h"

namespace lirvox::tools {
namespace {

// Words by lines, so that names may hold blanks. An equals sign is a word of its own here.
constexpr const char* kBegin = R"(# bash completion for lirvox
_lirvox_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$cur"); }
_lirvox_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen "$1" -- "$cur")
}
_lirvox() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} command=${COMP_WORDS[1]}
  COMPREPLY=()
  if [[ $cur == = ]]; then cur=
  elif [[ $prev == = ]]; then prev=${COMP_WORDS[COMP_CWORD-2]}
  fi
  [[ $COMP_CWORD -eq 1 ]] && command= prev=
)";

constexpr const char* kEnd = R"(}
complete -F _lirvox lirvox
)";

// What completes a value; empty for one that only its user knows.
std::string action(const Option& option) {
  std::string choices;
  for (const std::string& choice : option.choices) choices += (choices.empty() ? "" : " ") + choice;
  if (!choices.empty()) return "_lirvox_words '" + choices + '\'';
  switch (offeredFor(option)) {
    case Offered::files:
      return "_lirvox_files -f";
    case Offered::folders:
      return "_lirvox_files -d";
    case Offered::nothing:
      break;
  }
  return {};
}

std::string valueCase(const Command& command, const Option& option) {
  std::string pattern;
  for (const std::string& name : namesOf(option)) {
    pattern += (pattern.empty() ? "" : " | ") + command.name + ':' + name;
  }
  const std::string then = action(option);
  return "    " + pattern + ") " + (then.empty() ? "" : then + "; ") + "return ;;\n";
}

std::string commandCase(const Command& command) {
  std::string dashed;
  std::string argument;
  std::vector<Option> options = command.options;
  options.push_back(helpOption());
  for (const Option& option : options) {
    if (isArgument(option)) {
      if (argument.empty()) argument = action(option);
      continue;
    }
    for (const std::string& name : namesOf(option)) dashed += (dashed.empty() ? "" : " ") + name;
  }
  const std::string words = "_lirvox_words '" + dashed + '\'';
  if (argument.empty()) return "    " + command.name + ") " + words + " ;;\n";
  return "    " + command.name + ") if [[ $cur == -* ]]; then " + words + "; else " + argument +
         "; fi ;;\n";
}

}  // namespace

std::string bashCompletion(const Program& program) {
  std::string text = std::string(kBegin) + "  case $command:$prev in\n";
  std::string commands;
  for (const Command& command : program.commands) {
    commands += command.name + ' ';
    for (const Option& option : command.options) {
      if (!isArgument(option) && !isSwitch(option)) text += valueCase(command, option);
    }
  }
  text += "  esac\n  case $command in\n    '') _lirvox_words '" + commands +
          "-h --help --version' ;;\n";
  for (const Command& command : program.commands) text += commandCase(command);
  return text + "  esac\n" + kEnd;
}

}  // namespace lirvox::tools
