// The lirvox program.
#include <exception>
#include <iostream>

#include <CLI/CLI.hpp>

#include "catalog/CatalogError.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"

using namespace lirvox::tools;

int main(int argc, char** argv) {
  CLI::App app;
  CommandLine line{app, {}};
  app.description("Recognise what is playing, offline, against a database of your own music.");
  app.set_version_flag("--version", LIRVOX_VERSION);
  app.require_subcommand(1);
  app.footer(
      "Examples:\n"
      "  lirvox index ~/Music            fingerprint a folder into the database\n"
      "  lirvox recognize excerpt.ogg    say which track it is, and where in it\n"
      "\n"
      "Exit status: 0 done or recognised, 1 nothing recognised, 2 usage, 3 done but some\n"
      "files failed, 4 database, 5 audio device, 6 network or update.");
  addIndexCommand(line);
  addRecognizeCommand(line);
  addFingerprintCommand(line);
  addInfoCommand(line);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? exitDone : exitUsage;
  }
  try {
    return line.run();
  } catch (const lirvox::catalog::CatalogError& error) {
    complain(error.what());
    return exitDatabase;
  } catch (const std::exception& error) {
    complain(error.what());
    return exitSomeFailed;
  }
}
