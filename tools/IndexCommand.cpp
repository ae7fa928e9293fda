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
  int jobs = static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, 1024U));
  catalog::CatalogOptions catalog;
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
  std::cerr << counted(tally.added, "track") << " added (" << clockTime(progress.secondsOfSound())
            << " of sound, " << std::llround(progress.speed()) << " x real time), "
            << tally.unchanged << " unchanged, " << counted(tally.withoutAudio, "file")
            << " without sound, " << tally.failed << " failed: " << database << '\n';
}

int index(const Options& options) {
  Tally tally;
  std::vector<ListedFile> files = listFiles(options.paths, tally.failed);
  catalog::Catalog catalog(options.database, options.catalog);
  removeUnchanged(files, catalog, tally);
  std::uint64_t bytes = 0;
  for (const ListedFile& file : files) bytes += static_cast<std::uint64_t>(file.stamp.size);

  std::signal(SIGINT, interruptReading);
  std::signal(SIGTERM, interruptReading);
  Progress progress(files.size(), bytes);
  {
    TrackReader reader(files, catalog.rowRule(), static_cast<unsigned>(options.jobs));
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

Command indexCommand() {
  const auto options = std::make_shared<Options>();
  catalog::CatalogOptions& rules = options->catalog;
  return {
      .name = "index",
      .summary = "Fingerprint music into a database",
      .details =
          "Files that are in the database already and have not changed are skipped. What is\n"
          "interrupted leaves whole tracks. --shifts and --rows-per-hour are fixed when a "
          "database\n"
          "begins; --common may change each time.\n"
          "\n"
          "Examples:\n"
          "  lirvox index ~/Music\n"
          "  lirvox index -d radio.sqlite jingles/ theme.flac concert.mkv\n"
          "  lirvox index -d small.sqlite --rows-per-hour 200000 ~/Music",
      .options =
          {databaseOption(options->database),
           {.names = "-j,--jobs",
            .value = &options->jobs,
            .help = "Files read at a time",
            .unit = "N",
            .range = {{1, 1024}},
            .standard = "the number of processors"},
           {.names = "--shifts",
            .value = &rules.alignments,
            .help = "Time alignments of each track that are looked at",
            .choices = {"1", "2", "4", "8"},
            .standard = "8"},
           {.names = "--rows-per-hour",
            .value = &rules.rowsPerHour,
            .help = "The best rows that are kept of an hour of sound, 15 bytes each; 0 keeps all",
            .unit = "N",
            .range = {{0, 100'000'000}},
            .standard = "320000"},
           {.names = "--common",
            .value = &rules.commonHashes,
            .help = "Leave out hashes with more rows than this many times the mean; 0 leaves out "
                    "none",
            .unit = "FACTOR",
            .range = {{0, 1e6}},
            .standard = "20"},
           {.names = "PATH",
            .value = &options->paths,
            .help = "Files and folders of music",
            .required = true}},
      .run = [options] { return index(*options); }};
}

}  // namespace lirvox::tools
