// The lirvox program.
#include <exception>
#include <iostream>
#include <string_view>

#include <malloc.h>

#include "catalog/CatalogError.h"
#include "lib/platform/Platform.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/HelpFiles.h"

using namespace lirvox::tools;

namespace {

// The rows and samples of long recordings go back to the system as soon as they are done with:
// otherwise the C library begins to keep blocks of up to 32 MB once the first one has been freed.
void giveLargeBlocksBack() {
#ifdef M_MMAP_THRESHOLD
  mallopt(M_MMAP_THRESHOLD, 1 << 20);
#endif
}

}  // namespace

int main(int argc, char** argv) {
  giveLargeBlocksBack();
  // One set of folders, whatever the program's file is called.
  lirvox::platform::install(lirvox::platform::systemPlatform("lirvox"));
  const Program program = {
      .summary = "Recognise what is playing, offline, against a database of your own music.",
      .version = LIRVOX_VERSION,
      .details =
          "Examples:\n"
          "  lirvox index ~/Music            fingerprint a folder into the database\n"
          "  lirvox recognize excerpt.ogg    say which track it is, and where in it\n"
          "  lirvox listen                   say what is playing\n"
          "  lirvox update                   fetch the database of the service\n"
          "\n"
          "Exit status: 0 done or recognised, 1 nothing recognised or changed, 2 usage,\n"
          "3 done but some files failed, 4 database, 5 audio device, 6 network or update.",
      .commands = {indexCommand(),     recognizeCommand(), scanCommand(),        listenCommand(),
                   replayCommand(),    devicesCommand(),   fingerprintCommand(), explainCommand(),
                   plotCommand(),      evaluateCommand(),  infoCommand(),        installCommand(),
                   updateCommand(),    packCommand(),      publishCommand(),     listCommand(),
                   removeCommand(),    renameCommand(),    mergeCommand(),       verifyCommand(),
                   duplicatesCommand()}};
  try {
    // For the build, which installs them.
    if (argc == 3 && std::string_view(argv[1]) == "--write-help-files") {
      writeHelpFiles(program, argv[2]);
      return exitDone;
    }
    const int status = parseCommandLine(program, argc, argv)();
    if (std::cout.flush()) return status;
    complain("the output could not be written");
    return exitSomeFailed;
  } catch (const lirvox::catalog::CatalogError& error) {
    complain(error.what());
    return exitDatabase;
  } catch (const std::exception& error) {
    complain(error.what());
    return exitSomeFailed;
  }
}
