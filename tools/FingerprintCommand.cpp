// lirvox fingerprint: the query hashes of a file.
#include <cstdio>
#include <memory>
#include <string>

#include "tools/AudioDecoder.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/QueryPass.h"

namespace lirvox::tools {
namespace {

int fingerprint(const std::string& file) {
  QueryPass pass;
  try {
    readAudio(file, [&](const std::int32_t* words, std::size_t count) {
      pass.add(words, count);
      return true;
    });
  } catch (const AudioError& error) {
    complain(file + ": " + error.what());
    return exitSomeFailed;
  }
  const auto shifts = pass.hashesByShift();
  for (std::size_t shift = 0; shift < shifts.size(); ++shift) {
    for (const QueryHash& query : shifts[shift]) {
      std::printf("%zu %d %d\n", shift, query.time, query.hash);
    }
  }
  return exitDone;
}

}  // namespace

Command fingerprintCommand() {
  const auto file = std::make_shared<std::string>();
  return {.name = "fingerprint",
          .summary = "Print the query hashes of a file",
          .details =
              "One line per hash, in the order in which a recognition uses them: shift, time\n"
              "(frame of 256 samples at 11025 Hz within the shift) and hash.\n"
              "\n"
              "Example:\n"
              "  lirvox fingerprint capture.dat | wc -l",
          .options = {soundOption(*file)},
          .run = [file] { return fingerprint(*file); }};
}

}  // namespace lirvox::tools
