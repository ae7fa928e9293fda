// The numbers of a database.
#include "catalog/CatalogSummary.h"

#include <filesystem>

#include "catalog/DatabaseFile.h"

namespace lirvox::catalog {

CatalogSummary summarize(const std::string& path) {
  return naming(path, [&] {
    const auto database = openForReading(path);
    const auto number = [&](const char* query) { return database->execAndGet(query).getInt64(); };
    CatalogSummary summary;
    if (database->tableExists("tracks")) {
      summary.tracks = number("SELECT count(*) FROM tracks");
      summary.hours =
          database->execAndGet("SELECT coalesce(sum(duration), 0) / 3600 FROM tracks").getDouble();
    } else {
      summary.tracks = number("SELECT count(DISTINCT track_id) FROM db");
    }
    summary.rows = number("SELECT count(*) FROM db");
    if (database->tableExists("held")) summary.heldRows = number("SELECT count(*) FROM held");
    std::error_code ignored;
    summary.bytes = static_cast<std::int64_t>(std::filesystem::file_size(path, ignored));
    return summary;
  });
}

std::vector<std::int64_t> trackIds(const std::string& path) {
  return naming(path, [&] {
    std::vector<std::int64_t> ids;
    const auto database = openForReading(path);
    SQLite::Statement query(*database, "SELECT DISTINCT track_id FROM db ORDER BY track_id");
    while (query.executeStep()) ids.push_back(query.getColumn(0).getInt64());
    return ids;
  });
}

std::map<std::int32_t, std::string> trackTitles(const std::string& path) {
  return naming(path, [&] {
    std::map<std::int32_t, std::string> titles;
    const auto database = openForReading(path);
    if (!database->tableExists("tracks")) return titles;
    SQLite::Statement query(*database, "SELECT track_id, title, artist FROM tracks");
    while (query.executeStep()) {
      const std::string artist = query.getColumn(2).getString();
      std::string& title = titles[query.getColumn(0).getInt()];
      title = query.getColumn(1).getString();
      if (!artist.empty()) title = artist + " - " + title;
    }
    return titles;
  });
}

}  // namespace lirvox::catalog
