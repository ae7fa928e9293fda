// The database as devices get it.
#include "catalog/DeviceDatabase.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string_view>
#include <system_error>
#include <vector>

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

#include "catalog/CatalogFile.h"

namespace lirvox::catalog {
namespace {

// Clustered as a catalogue is. Written in order, pages are full and the bytes depend on
// the content alone.
constexpr const char* kTables = R"(
  CREATE TABLE db(track_id INTEGER NOT NULL, num1 INTEGER NOT NULL, num2 INTEGER NOT NULL,
                  PRIMARY KEY(num2, track_id, num1)) WITHOUT ROWID;
  CREATE TABLE tracks(track_id INTEGER PRIMARY KEY, title TEXT NOT NULL, artist TEXT NOT NULL,
                      path TEXT NOT NULL, duration REAL NOT NULL);
)";
constexpr const char* kRows = R"(
  SELECT track_id, num1, num2 FROM db
  WHERE track_id IS NOT NULL AND num1 IS NOT NULL AND num2 IS NOT NULL
  ORDER BY num2, track_id, num1)";

void copyRows(SQLite::Database& original, SQLite::Database& device) {
  SQLite::Statement from(original, kRows);
  SQLite::Statement into(device, "INSERT OR IGNORE INTO db(track_id, num1, num2) VALUES(?, ?, ?)");
  while (from.executeStep()) {
    for (int i = 0; i < 3; ++i) into.bind(i + 1, from.getColumn(i).getInt64());
    into.exec();
    into.reset();
  }
}

void copyTracks(SQLite::Database& original, SQLite::Database& device) {
  SQLite::Statement from(original, "SELECT track_id, title, artist, duration FROM tracks");
  SQLite::Statement into(device, "INSERT INTO tracks VALUES(?, ?, ?, '', ?)");
  while (from.executeStep()) {
    SQLite::bind(into, from.getColumn(0).getInt64(), from.getColumn(1).getString(),
                 from.getColumn(2).getString(), from.getColumn(3).getDouble());
    into.exec();
    into.reset();
  }
}

// Row by row: a connection that had both databases would run what the schema of one holds
// with the rights to change the other.
void copy(const std::string& original, const std::string& path) {
  const auto reader = openForReading(original);
  SQLite::Database device(path, SQLite::OPEN_READWRITE);
  // A file that nobody knows of yet needs no journal.
  device.exec("PRAGMA journal_mode = OFF");
  device.exec("PRAGMA synchronous = OFF");
  device.exec("PRAGMA application_id = " + std::to_string(kDeviceApplicationId));
  device.exec("PRAGMA user_version = " + std::to_string(kUserVersion));
  SQLite::Transaction transaction(device);
  device.exec(kTables);
  copyRows(*reader, device);
  if (reader->tableExists("tracks")) copyTracks(*reader, device);
  transaction.commit();
  // Rows that are inserted in order leave an eighth of each page empty.
  device.exec("VACUUM");
}

// The 64-bit FNV-1a hash. Nobody gains by making two databases with one stamp.
class ContentHash {
 public:
  void add(std::string_view bytes) {
    for (const char byte : bytes) {
      value_ = (value_ ^ static_cast<unsigned char>(byte)) * 0x100000001b3ULL;
    }
  }
  std::string digits() const {
    std::array<char, 17> text{};
    std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(value_));
    return text.data();
  }

 private:
  std::uint64_t value_ = 0xcbf29ce484222325ULL;
};

}  // namespace

DeviceDatabase::DeviceDatabase(const std::string& original, const std::string& folder) {
  std::error_code error;
  file_ = platform::TemporaryFile::createIn(folder, error);
  if (error) throw CatalogError(folder + ": " + error.message());
  path_ = folder + '/' + file_.name();
  naming(original, [&] { copy(original, path_); });
}

std::string DeviceDatabase::stamp(const std::string& salt) const {
  ContentHash hash;
  hash.add(salt);
  std::ifstream file(path_, std::ios::binary);
  std::vector<char> chunk(std::size_t{1} << 20);
  while (file.read(chunk.data(), static_cast<std::streamsize>(chunk.size())), file.gcount() > 0) {
    hash.add({chunk.data(), static_cast<std::size_t>(file.gcount())});
  }
  // A stamp of a part would be the stamp of another database.
  if (file.bad() || !file.eof()) throw CatalogError(path_ + ": cannot be read");
  return hash.digits();
}

}  // namespace lirvox::catalog
