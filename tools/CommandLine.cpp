// Hands the commands to CLI11. The only file that includes it: a file takes ten times as
// long to compile with it.
#include "tools/CommandLine.h"

#include <cmath>
#include <cstdlib>
#include <type_traits>

#include <CLI/CLI.hpp>

#include "lib/LirvoxSettings.h"

namespace lirvox::tools {
namespace {

template <class Value>
constexpr bool kIsWhole = std::is_same_v<Value, int> || std::is_same_v<Value, std::optional<int>>;

// CLI::Range lets pass what is neither less nor more.
std::string notANumber(const std::string& text) {
  return std::isnan(std::strtod(text.c_str(), nullptr)) ? text + " is not a number" : "";
}

template <class Value>
CLI::Option* bind(CLI::App& app, const Option& option, Value& value) {
  if constexpr (std::is_same_v<Value, bool>) {
    return app.add_flag(option.names, value, option.help);
  } else {
    CLI::Option* const bound = app.add_option(option.names, value, option.help);
    if constexpr (std::is_same_v<Value, std::string> || std::is_arithmetic_v<Value>) {
      bound->capture_default_str();
    }
    if (option.range) {
      bound->check(notANumber);
      using Bound = std::conditional_t<kIsWhole<Value>, int, double>;
      bound->check(CLI::Range(static_cast<Bound>(option.range->least),
                              static_cast<Bound>(option.range->most)));
    }
    return bound;
  }
}

// How the help shows the value of an option: by its unit or choices, and with its default.
std::string valueText(const Option& option, const CLI::Option& bound) {
  std::string text = option.unit;
  for (const std::string& choice : option.choices) text += (text.empty() ? "" : "|") + choice;
  if (text.empty()) text = bound.get_type_name();
  const std::string known = bound.get_default_str();
  const std::string standard = known.empty() ? option.standard : known;
  if (!standard.empty()) text += " [" + standard + ']';
  return option.required ? text + " (required)" : text;
}

void add(CLI::App& app, const Option& option) {
  CLI::Option* const bound =
      std::visit([&](auto* value) { return bind(app, option, *value); }, option.value);
  bound->required(option.required);
  if (!option.choices.empty()) bound->check(CLI::IsMember(option.choices));
  if (option.check) bound->check(option.check);
  if (bound->get_expected_max() > 0 && !bound->get_positional()) {
    bound->option_text(valueText(option, *bound));
  } else if (std::holds_alternative<std::vector<std::string>*>(option.value)) {
    bound->option_text("...");
  }
}

// What is said of a command line that makes no sense.
std::string complaint(const CLI::App* app, const CLI::Error& error) {
  const auto commands = app->get_subcommands();
  const auto unknown = app->remaining();
  std::string reason = error.what();
  if (commands.empty()) {
    reason = unknown.empty() ? "a command is required"
                             : unknown.front() + ": no such " +
                                   (unknown.front().front() == '-' ? "option" : "command");
  }
  const std::string which = commands.empty() ? "" : ' ' + commands.front()->get_name();
  return "lirvox: " + reason + "\nlirvox" + which + " --help tells more\n";
}

// In the words of the manual.
void setWords(CLI::App& app) {
  const auto words = app.get_formatter();
  words->label("Positionals", "Arguments");
  words->label("SUBCOMMAND", "COMMAND");
  words->label("TEXT", "");
  words->label("REQUIRED", "");
  app.failure_message(complaint);
}

}  // namespace

std::function<int()> parseCommandLine(const Program& program, int argc, char** argv) {
  CLI::App app(program.summary, "lirvox");
  setWords(app);
  app.set_version_flag("--version", program.version);
  app.require_subcommand(1);
  app.footer(program.details);
  std::function<int()> run;
  for (const Command& command : program.commands) {
    CLI::App* const subcommand = app.add_subcommand(command.name, command.summary);
    subcommand->group("Commands");
    subcommand->footer(command.details);
    for (const Option& option : command.options) add(*subcommand, option);
    subcommand->callback([&run, &command] { run = command.run; });
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const int status = app.exit(error) == 0 ? exitDone : exitUsage;
    return [status] { return status; };
  }
  return run;
}

Option databaseOption(std::string& path) {
  path = LirvoxSettings::databasePath();
  return {.names = "-d,--database",
          .value = &path,
          .help = "Database, the installed one if not given",
          .unit = "FILE"};
}

Option soundOption(std::string& file) {
  return {.names = "FILE",
          .value = &file,
          .help = "Sound or video file, *.dat recording, or - for standard input",
          .required = true};
}

Option votesOption(int& votes) {
  votes = LirvoxSettings::minimumFindedCntDefault();
  return {.names = "--min-votes",
          .value = &votes,
          .help = "Votes that a result must exceed",
          .unit = "N",
          .range = {{1, 1'000'000}}};
}

Option formatOption(std::string& format) {
  format = "text";
  return {
      .names = "--format", .value = &format, .help = "Output format", .choices = {"text", "json"}};
}

}  // namespace lirvox::tools
