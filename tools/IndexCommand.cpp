// lirvox index: music into a database.
#include <algorithm>
#include <cmath>
#include <csignal>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <CLI/CLI.hpp>

#include "catalog/Catalog.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/FileList.h"
#include "tools/Progress.h"
#include "tools/TrackReader.h"

namespace lirvox::tools {
namespace {

struct Options {
  std::string database;
  unsigned jobs = std::max(1U, std::thread::hardware_concurrency());
  int shifts = 0;
  double commonShare = -1.0;
  std::vector<std::string> paths;
};

struct Tally {
  std::size_t added = 0;
  std::size_t unchanged = 0;
  std::size_t withoutAudio = 0;
  std::size_t failed = 0;
};

void interruptReading(int) {
  TrackReader::interrupted = true;
}

catalog::CatalogOptions catalogOptions(const Options& options) {
  catalog::CatalogOptions chosen;
  if (options.shifts != 0) chosen.shifts = static_cast<catalog::Shifts>(options.shifts);
  if (options.commonShare >= 0.0) chosen.rule = catalog::CommonHashRule{options.commonShare};
  return chosen;
}

void removeUnchanged(std::vector<ListedFile>& files, catalog::Catalog& catalog, Tally& tally) {
  const auto unchanged = std::remove_if(files.begin(), files.end(), [&](const ListedFile& file) {
    return catalog.contains(file.path, file.stamp);
  });
  tally.unchanged = static_cast<std::size_t>(files.end() - unchanged);
  files.erase(unchanged, files.end());
}

void take(ReadTrack read, catalog::Catalog& catalog, Progress& progress, Tally& tally) {
  const auto size = static_cast<std::uint64_t>(read.file->stamp.size);
  const double seconds = read.track.info.durationInSeconds;
  if (read.state == ReadTrack::State::read) {
    ++tally.added;
    catalog.add(std::move(read.track));
  } else if (read.state == ReadTrack::State::noAudio && !read.file->named) {
    // Covers and notes lie among the music of most people.
    ++tally.withoutAudio;
  } else {
    ++tally.failed;
    progress.hide();
    complain(read.file->path + ": " + read.reason);
  }
  progress.add(size, seconds);
}

void report(const Tally& tally, const Progress& progress, const std::string& database) {
  std::cerr << tally.added << " tracks added (" << clockTime(progress.secondsOfSound())
            << " of sound, " << std::llround(progress.speed()) << " x real time), "
            << tally.unchanged << " unchanged, " << tally.withoutAudio << " files without sound, "
            << tally.failed << " failed: " << database << '\n';
}

int index(const Options& options) {
  Tally tally;
  std::vector<ListedFile> files = listFiles(options.paths, tally.failed);
  catalog::Catalog catalog(options.database, catalogOptions(options));
  removeUnchanged(files, catalog, tally);
  std::uint64_t bytes = 0;
  for (const ListedFile& file : files) bytes += static_cast<std::uint64_t>(file.stamp.size);

  std::signal(SIGINT, interruptReading);
  std::signal(SIGTERM, interruptReading);
  Progress progress(files.size(), bytes);
  {
    TrackReader reader(files, catalog.shifts(), options.jobs);
    while (std::optional<ReadTrack> read = reader.next()) {
      take(std::move(*read), catalog, progress, tally);
    }
  }
  catalog.commit();
  progress.hide();
  report(tally, progress, options.database);
  if (TrackReader::interrupted) {
    complain("interrupted: the tracks that were done are in the database");
    return exitSomeFailed;
  }
  return tally.failed > 0 ? exitSomeFailed : exitDone;
}

}  // namespace

void addIndexCommand(CommandLine& line) {
  CLI::App* const command = line.app.add_subcommand("index", "Fingerprint music into a database");
  command->footer(
      "Files that are in the database already and have not changed are skipped. What is\n"
      "interrupted leaves whole tracks.\n"
      "\n"
      "Examples:\n"
      "  lirvox index ~/Music\n"
      "  lirvox index -d radio.sqlite --shifts 4 jingles/ theme.flac concert.mkv");
  const auto options = std::make_shared<Options>();
  addDatabaseOption(*command, options->database);
  command->add_option("-j,--jobs", options->jobs, "Files read at a time")
      ->check(CLI::Range(1, 1024))
      ->capture_default_str();
  command
      ->add_option("--shifts", options->shifts,
                   "Time alignments kept of each track: more find weaker matches and take more "
                   "room (default 2; fixed for a database)")
      ->check(CLI::IsMember({1, 2, 4}));
  command
      ->add_option("--common", options->commonShare,
                   "Share of the hash values, most frequent first, that recognitions leave out")
      ->check(CLI::Range(0.0, 0.5));
  command->add_option("PATH", options->paths, "Files and folders of music")->required();
  command->callback([&line, options] { line.run = [options] { return index(*options); }; });
}

}  // namespace lirvox::tools
