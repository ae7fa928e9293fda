// The parts that every command of the program is made of.
#pragma once

#include <functional>
#include <string>

#include <CLI/CLI.hpp>

namespace CLI {
class App;
}

namespace lirvox::tools {

/// What the program's exit status says.
enum ExitStatus : int {
  exitDone = 0,           ///< done, or recognised
  exitNotRecognized = 1,  ///< nothing was recognised
  exitUsage = 2,          ///< the command line makes no sense
  exitSomeFailed = 3,     ///< done, but some files failed
  exitDatabase = 4,       ///< the database cannot be used
  exitAudioDevice = 5,    ///< there is nothing to listen to
  exitUpdate = 6,         ///< the network or an update failed
};

/// The command line while it is put together.
struct CommandLine {
  CLI::App& app;
  /// What the chosen command does; returns the exit status.
  std::function<int()> run;
};

void addIndexCommand(CommandLine& line);
void addRecognizeCommand(CommandLine& line);
void addFingerprintCommand(CommandLine& line);
void addInfoCommand(CommandLine& line);

/// Adds the option -d, which stands for the installed database unless given.
void addDatabaseOption(CLI::App& command, std::string& path);

}  // namespace lirvox::tools
