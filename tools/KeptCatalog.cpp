// What `lirvox index` made, saved from being replaced.
#include "tools/KeptCatalog.h"

#include <filesystem>
#include <system_error>

#include <SQLiteCpp/SQLiteCpp.h>

#include "catalog/CatalogFile.h"
#include "tools/Console.h"

namespace lirvox::tools {
namespace {

namespace fs = std::filesystem;

bool isCatalog(const std::string& path) {
  std::error_code ignored;
  if (!fs::exists(path, ignored)) return false;
  try {
    // Writable: what an interrupted run has left in a journal is put right first.
    SQLite::Database database(path, SQLite::OPEN_READWRITE, 2'000);
    return database.execAndGet("PRAGMA application_id").getInt() == catalog::kApplicationId;
  } catch (const SQLite::Exception&) {
    return false;
  }
}

std::string freeName(const std::string& path) {
  const fs::path folder = fs::path(path).parent_path();
  fs::path name = folder / "indexed.sqlite";
  for (int i = 2; fs::exists(name); ++i) {
    name = folder / ("indexed-" + std::to_string(i) + ".sqlite");
  }
  return name;
}

}  // namespace

KeptCatalog::KeptCatalog(const std::string& path) : path_(path) {
  if (!isCatalog(path_)) return;
  kept_ = freeName(path_);
  std::error_code error;
  fs::create_hard_link(path_, kept_, error);
  if (error) throw catalog::CatalogError(kept_ + ": " + error.message());
}

KeptCatalog::~KeptCatalog() {
  if (kept_.empty()) return;
  std::error_code ignored;
  if (fs::equivalent(path_, kept_, ignored)) {
    fs::remove(kept_, ignored);
  } else {
    complain("what lirvox index had made is now " + kept_);
  }
}

}  // namespace lirvox::tools
