// lirvox publish: a database as a service of static files.
#include <iostream>
#include <memory>
#include <string>

#include "catalog/Publish.h"
#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/DatabaseCheck.h"

namespace lirvox::tools {
namespace {

struct Options {
  std::string database;
  std::string folder;
  catalog::PublishOptions service;
  bool prune = false;
};

int publish(const Options& options) {
  if (!databaseIsUsable(options.database)) return exitDatabase;
  const auto published = catalog::publish(options.database, options.folder, options.service);
  std::cout << "generation " << published.dt << (published.isNew ? ", new: " : ", unchanged: ")
            << options.folder << '/' << published.archive << '\n';
  if (options.prune) {
    std::cout << counted(catalog::prune(options.folder), "older archive") << " removed\n";
  }
  return exitDone;
}

std::string checkUrl(const std::string& url) {
  const bool good = url.rfind("http://", 0) == 0 || url.rfind("https://", 0) == 0;
  return good ? "" : url + " does not begin with http:// or https://";
}

}  // namespace

Command publishCommand() {
  const auto options = std::make_shared<Options>();
  return {
      .name = "publish",
      .summary = "Write a folder that serves a database to devices",
      .details =
          "Any web server that serves static files serves the folder; clients may come at any\n"
          "moment. Archives of older generations stay until --prune: give clients that have just\n"
          "read an older reply, and caches that hold one, the time to fetch theirs.\n"
          "\n"
          "Examples:\n"
          "  lirvox publish -d music.sqlite --url http://db.example.com /srv/lirvox\n"
          "  LIRVOX_API_URL=http://db.example.com LIRVOX_SERVICE_HOST_FOLDER=db.example.com \\\n"
          "    lirvox update",
      .options = {databaseOption(options->database),
                  {.names = "--url",
                   .value = &options->service.baseUrl,
                   .help = "Where clients find the folder, their LIRVOX_API_URL",
                   .unit = "BASE",
                   .required = true,
                   .check = checkUrl},
                  {.names = "--host-folder",
                   .value = &options->service.hostFolder,
                   .help = "Their LIRVOX_SERVICE_HOST_FOLDER, if not the host of --url",
                   .unit = "NAME"},
                  {.names = "--prune",
                   .value = &options->prune,
                   .help = "Then remove the archives of older generations"},
                  {.names = "DIR",
                   .value = &options->folder,
                   .help = "Folder to write, made when missing",
                   .required = true}},
      .run = [options] { return publish(*options); }};
}

}  // namespace lirvox::tools
