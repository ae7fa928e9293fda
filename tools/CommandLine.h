// The program's command line: every command, with the options that it takes.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace lirvox::tools {

/// What the program's exit status says.
enum ExitStatus : int {
  exitDone = 0,           ///< done, or recognised
  exitNotRecognized = 1,  ///< nothing was recognised, or changed since the answer was no
  exitUsage = 2,          ///< the command line makes no sense
  exitSomeFailed = 3,     ///< done, but some files failed
  exitDatabase = 4,       ///< the database cannot be used
  exitAudioDevice = 5,    ///< there is nothing to listen to
  exitUpdate = 6,         ///< the network or an update failed
};

/// The values that a number may have: all of [least, most].
struct Interval {
  double least;
  double most;
};

/// An option, or an argument that has its place: then its name has no dash.
struct Option {
  std::string names;  ///< as in "-d,--database"
  /// Where the value goes. What stands there is the default, and the help shows it; a bool
  /// makes a switch, a vector an argument that repeats.
  std::variant<bool*, int*, double*, std::string*, std::optional<int>*, std::optional<double>*,
               std::optional<std::string>*, std::vector<std::string>*>
      value;
  std::string help;
  std::string unit = {};  ///< what stands for the value in the help, as in SECONDS
  bool required = false;
  std::optional<Interval> range = {};
  std::vector<std::string> choices = {};  ///< the only values, if any are given
  /// Says what is wrong with a value; empty if nothing is.
  std::function<std::string(const std::string&)> check = {};
  /// What the manual calls a default that depends on the machine.
  std::string standard = {};
};

struct Command {
  std::string name;
  std::string summary;  ///< one line
  std::string details;  ///< what its help says below the options, with examples
  std::vector<Option> options;
  std::function<int()> run;  ///< returns the exit status
};

struct Program {
  std::string summary;
  std::string version;
  std::string details;
  std::vector<Command> commands;
};

/// What the command line asks for, to be called: it returns the exit status. A usage error
/// has been told then, and help that was asked for is printed.
std::function<int()> parseCommandLine(const Program& program, int argc, char** argv);

Command indexCommand();
Command recognizeCommand();
Command fingerprintCommand();
Command explainCommand();
Command plotCommand();
Command evaluateCommand();
Command infoCommand();
Command listenCommand();
Command devicesCommand();
Command scanCommand();
Command replayCommand();
Command installCommand();
Command updateCommand();
Command packCommand();
Command publishCommand();
Command listCommand();
Command removeCommand();
Command renameCommand();
Command mergeCommand();
Command verifyCommand();
Command duplicatesCommand();

/// The option -d, which stands for the installed database unless given.
Option databaseOption(std::string& path);
/// The argument FILE, which is heard.
Option soundOption(std::string& file);
/// --min-votes, with the recognizer's default.
Option votesOption(int& votes);
/// --format, text or json.
Option formatOption(std::string& format);

}  // namespace lirvox::tools
