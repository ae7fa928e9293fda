// lirvox merge: many catalogues to one.
#include <atomic>
#include <csignal>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "catalog/CatalogFile.h"
#include "catalog/CatalogSummary.h"
#include "catalog/Merge.h"
#include "tools/CatalogReport.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/PercentProgress.h"
#include "tools/Question.h"

namespace lirvox::tools {
namespace {

struct Options {
  std::string output;
  std::string format;
  bool yes = false;
  catalog::MergeOptions merge;
  std::vector<std::string> parts;
};

std::atomic<bool> interrupted{false};

void interrupt(int) {
  interrupted = true;
}

// Only a catalogue is replaced, and only by catalogues: nobody is asked about anything else.
// Opening it undoes what a killed process has left beside it, which would be taken for a part
// of the new file.
std::optional<ExitStatus> mayNotWrite(const Options& options) {
  std::error_code ignored;
  if (!std::filesystem::exists(options.output, ignored)) return std::nullopt;
  catalog::expectWritableCatalog(options.output);
  for (const std::string& part : options.parts) catalog::openCatalogForReading(part);
  const auto tracks = catalog::summarize(options.output).tracks;
  return refused(
      options.output + " is there already, with " + counted(tracks, "track") + ". Replace it?",
      options.yes);
}

int merge(const Options& options) {
  if (const auto status = mayNotWrite(options)) return *status;
  // What is not finished must be cleared away.
  std::signal(SIGINT, interrupt);
  std::signal(SIGTERM, interrupt);
  PercentProgress progress("merging");
  const auto merged = catalog::merge(options.parts, options.output, options.merge,
                                     [show = progress.handler()](double done) {
                                       if (interrupted) throw std::runtime_error("interrupted");
                                       show(done);
                                     });
  progress.hide();
  CatalogReport(options.format).merged(merged, options.parts.size(), options.output);
  return exitDone;
}

}  // namespace

Command mergeCommand() {
  const auto options = std::make_shared<Options>();
  return {
      .name = "merge",
      .summary = "Make one database of many",
      .details =
          "The parts are databases that lirvox index made, on as many machines as you like, with\n"
          "the same --shifts and --rows-per-hour; they stay as they are. The tracks of the first\n"
          "part keep their ids, those of the others follow part by part. A file that several "
          "parts\n"
          "have is taken once. Which hashes are common is decided anew. The same parts in the "
          "same\n"
          "order give the same file, which appears whole or not at all.\n"
          "\n"
          "Examples:\n"
          "  lirvox merge -o music.sqlite part1.sqlite part2.sqlite part3.sqlite\n"
          "  lirvox merge --yes -o music.sqlite music.sqlite new.sqlite",
      .options = {{.names = "-o,--output",
                   .value = &options->output,
                   .help = "Database to write",
                   .unit = "FILE",
                   .required = true},
                  {.names = "--common",
                   .value = &options->merge.commonHashes,
                   .help = "Leave out hashes with more rows than this many times the mean; 0 "
                           "leaves out none",
                   .unit = "FACTOR",
                   .range = {{0, 1e6}},
                   .standard = "as the parts do"},
                  {.names = "--replace",
                   .value = &options->merge.replace,
                   .help = "Where parts have different files of one path, take the later part's"},
                  yesOption(options->yes),
                  formatOption(options->format),
                  {.names = "PART",
                   .value = &options->parts,
                   .help = "Databases to merge",
                   .required = true}},
      .run = [options] { return merge(*options); }};
}

}  // namespace lirvox::tools
