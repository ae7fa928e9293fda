// A service of static files: what `lirvox publish` writes.
#include "catalog/Publish.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include <nlohmann/json.hpp>

#include "catalog/CatalogError.h"
#include "catalog/DeviceDatabase.h"
#include "catalog/ZipWriter.h"

namespace lirvox::catalog {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr const char* kReply = "api/last_db_generation.php";
constexpr const char* kArchives = "archives";

std::string withoutSlash(std::string url) {
  while (!url.empty() && url.back() == '/') url.pop_back();
  return url;
}

// The host of "scheme://host:port/path".
std::string hostOf(const std::string& url) {
  const std::size_t scheme = url.find("://");
  if (scheme == std::string::npos) throw CatalogError(url + ": not an absolute URL");
  const std::string rest = url.substr(scheme + 3);
  return rest.substr(0, rest.find_first_of(":/?#"));
}

std::string hostFolderOf(const PublishOptions& options) {
  const std::string folder =
      options.hostFolder.empty() ? hostOf(options.baseUrl) : options.hostFolder;
  if (folder.empty() || folder == ".." || folder.find('/') != std::string::npos) {
    throw CatalogError("\"" + folder + "\" cannot be the name of the host's folder");
  }
  return folder;
}

void makeFolder(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) throw CatalogError(folder.string() + ": " + error.message());
  platform::removeAbandonedFiles(folder);
}

void writeArchive(const std::string& path, const std::string& database,
                  const std::string& hostFolder) {
  ZipWriter writer(path);
  // Updates do not make the folder of the live database; the archive can.
  writer.addFolder("lirvox/");
  writer.addFile("home/" + hostFolder + "/www/tmp/db1.sqlite", database);
  writer.finish();
}

void writeReply(const fs::path& path, const std::string& dt, const std::string& url) {
  const std::string text = Json{{"Result", "OK"}, {"dt", dt}, {"url", url}}.dump() + "\n";
  if (const auto error = platform::writeWholeFile(path, text)) {
    throw CatalogError(path.string() + ": " + error.message());
  }
}

}  // namespace

Published publish(const std::string& database, const std::string& folder,
                  const PublishOptions& options) {
  const std::string hostFolder = hostFolderOf(options);
  const fs::path archives = fs::path(folder) / kArchives;
  const fs::path reply = fs::path(folder) / kReply;
  makeFolder(archives);
  makeFolder(reply.parent_path());

  const DeviceDatabase device(database, archives);
  Published published;
  // The same database for another host is another archive.
  published.dt = device.stamp(hostFolder);
  published.archive = std::string(kArchives) + '/' + published.dt + ".zip";
  const fs::path archive = fs::path(folder) / published.archive;
  std::error_code unknown;
  published.isNew = !fs::exists(archive, unknown);
  if (published.isNew) writeArchive(archive, device.path(), hostFolder);
  writeReply(reply, published.dt, withoutSlash(options.baseUrl) + '/' + published.archive);
  return published;
}

std::size_t prune(const std::string& folder) {
  const fs::path reply = fs::path(folder) / kReply;
  std::ifstream file(reply, std::ios::binary);
  const Json json = Json::parse(std::istreambuf_iterator<char>(file), {}, nullptr, false);
  if (!json.is_object() || !json.contains("dt") || !json["dt"].is_string()) {
    throw CatalogError(reply.string() + ": no reply to prune by");
  }
  const std::string current = json["dt"].get<std::string>() + ".zip";
  std::size_t removed = 0;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(fs::path(folder) / kArchives, error)) {
    const fs::path& path = entry.path();
    if (path.extension() != ".zip" || path.filename() == current) continue;
    if (fs::remove(path, error)) ++removed;
  }
  return removed;
}

}  // namespace lirvox::catalog
