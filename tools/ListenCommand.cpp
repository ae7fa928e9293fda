// lirvox listen: what is playing.
#include <memory>

#include "tools/CommandLine.h"
#include "tools/DatabaseCheck.h"
#include "tools/Listening.h"

namespace lirvox::tools {
namespace {

int listen(const Listening::Options& options) {
  if (!databaseIsUsable(options.database)) return exitDatabase;
  return Listening(options).run();
}

}  // namespace

Command listenCommand() {
  const auto options = std::make_shared<Listening::Options>();
  return {
      .name = "listen",
      .summary = "Say what is playing, in the room or on this computer",
      .details =
          "Tells the track and how far it has got. With --continuous, a track that goes on is\n"
          "told once, and again when its position jumps or another was heard in between;\n"
          "captures in which nothing is recognised are passed over. On a terminal a meter shows\n"
          "the level. What plays on this computer is heard through a monitor: lirvox devices.\n"
          "\n"
          "JSON: one object per line, with recognized, track_id, title, position (seconds in the\n"
          "track at the start of the capture) and position_now.\n"
          "\n"
          "Exit status: 0 something was recognised, 1 nothing, 5 there is nothing to listen to,\n"
          "or not any more.\n"
          "\n"
          "Examples:\n"
          "  lirvox listen\n"
          "  lirvox listen --continuous --format json --source alsa_output.hdmi.monitor\n"
          "  lirvox listen --seconds 8 --save heard.dat && lirvox replay heard.dat",
      .options = {databaseOption(options->database),
                  {.names = "--seconds",
                   .value = &options->seconds,
                   .help = "Length of a capture",
                   .unit = "SECONDS",
                   .range = {{0.5, 3600}}},
                  {.names = "--continuous",
                   .value = &options->continuous,
                   .help = "Capture after capture, until Ctrl-C; tells each track once"},
                  {.names = "--source",
                   .value = &options->source,
                   .help = "Listen to this source and no other; else to the default one, also "
                           "when it changes",
                   .unit = "NAME"},
                  votesOption(options->minimumVotes),
                  formatOption(options->format),
                  {.names = "--save",
                   .value = &options->saveTo,
                   .help = "Keep the capture, the last one, for lirvox replay",
                   .unit = "FILE"}},
      .run = [options] { return listen(*options); }};
}

}  // namespace lirvox::tools
