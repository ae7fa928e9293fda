// The database as devices get it.
#pragma once

#include <string>

#include "lib/platform/TemporaryFile.h"

namespace lirvox::catalog {

/// Marks a database as one for devices ("Lrvd"): not a catalogue, which could be added to.
constexpr int kDeviceApplicationId = 0x4C727664;

/// A copy of a database with what a device needs and nothing else: the tables `db` and
/// `tracks`, the latter without the paths of the files, which are nobody's business.
/// It is a file in a given folder and goes with the object.
///
/// Equal content gives equal files, whatever else the original holds. Any SQLite file
/// with a table `db` will do. Throws `CatalogError`.
class DeviceDatabase {
 public:
  DeviceDatabase(const std::string& original, const std::string& folder);

  const std::string& path() const { return path_; }

  /// A name for its content, of 16 hexadecimal digits. `salt` is taken into account.
  std::string stamp(const std::string& salt) const;

 private:
  platform::TemporaryFile file_;
  std::string path_;
};

}  // namespace lirvox::catalog
