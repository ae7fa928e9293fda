// Completion in zsh.
#include "tools/Completion.h"
#include "tools/OptionText.h"

namespace lirvox::tools {
namespace {

constexpr const char* kBegin = R"(#compdef lirvox
_lirvox() {
  local curcontext=$curcontext state line
  typeset -A opt_args
  _arguments -C '(- *)'{-h,--help}'[Print help and exit]' \
    '(- *)--version[Print the version and exit]' '1: :->command' '*:: :->argument'
  case $state in
    command)
      local -a commands=(
)";

constexpr const char* kMiddle = R"(      )
      _describe -t commands 'lirvox command' commands ;;
    argument)
      case $words[1] in
)";

constexpr const char* kEnd = R"(      esac ;;
  esac
}
_lirvox "$@"
)";

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char character : text) {
    character == '\'' ? result += "'\\''" : result += character;
  }
  return result + '\'';
}

// ":message:action" of a value.
std::string valueOf(const Option& option) {
  std::string action;
  for (const std::string& choice : option.choices) action += (action.empty() ? "(" : " ") + choice;
  if (!action.empty()) {
    action += ')';
  } else if (offeredFor(option) != Offered::nothing) {
    action = offeredFor(option) == Offered::files ? "_files" : "_files -/";
  }
  const std::string name = option.choices.empty() ? valueName(option) : "choice";
  return ':' + escaped(name, ":\\") + ':' + action;
}

std::string argumentSpec(const Option& option) {
  if (isArgument(option)) return quoted((repeats(option) ? "*" : "") + valueOf(option));
  const std::vector<std::string> names = namesOf(option);
  std::string excluded;
  std::string list;
  for (const std::string& name : names) {
    excluded += (excluded.empty() ? "" : " ") + name;
    const bool isLong = name.rfind("--", 0) == 0;
    list += (list.empty() ? "" : ",") + name + (isSwitch(option) ? "" : isLong ? "=" : "+");
  }
  const std::string end =
      '[' + escaped(option.help, "[]:\\") + ']' + (isSwitch(option) ? "" : valueOf(option));
  if (names.size() == 1) return quoted(list + end);
  return quoted('(' + excluded + ')') + '{' + list + '}' + quoted(end);
}

}  // namespace

std::string zshCompletion(const Program& program) {
  std::string text = kBegin;
  for (const Command& command : program.commands) {
    text += "        " + quoted(command.name + ':' + command.summary) + '\n';
  }
  text += kMiddle;
  for (const Command& command : program.commands) {
    text += "        " + command.name + ")\n          _arguments";
    for (const Option& option : command.options) text += " \\\n            " + argumentSpec(option);
    text += " \\\n            " + argumentSpec(helpOption()) + " ;;\n";
  }
  return text + kEnd;
}

}  // namespace lirvox::tools
