// What the tracks of a database are called.
#include "tools/Titles.h"

#include "catalog/CatalogSummary.h"

namespace lirvox::tools {

Titles::Titles(const std::string& path) : titles_(catalog::trackTitles(path)) {}

std::string Titles::of(std::int32_t trackId) const {
  const auto title = titles_.find(trackId);
  return title == titles_.end() ? "track " + std::to_string(trackId) : title->second;
}

}  // namespace lirvox::tools
