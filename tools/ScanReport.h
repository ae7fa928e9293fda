// Stretches of a recording as the program prints them.
#pragma once

#include <string>

#include "tools/Stretches.h"
#include "tools/Titles.h"

namespace lirvox::tools {

/// Writes to the standard output stream, a line for each stretch: text for people, a JSON
/// object, or CSV after a line of names.
class ScanReport {
 public:
  /// Titles are those of the database at `path`. Throws `CatalogError`.
  ScanReport(const std::string& path, const std::string& format);

  void stretch(const Stretch& stretch) const;

 private:
  void printText(const Stretch& stretch) const;
  void printJson(const Stretch& stretch) const;
  void printCsv(const Stretch& stretch) const;

  const Titles titles_;
  const std::string format_;
};

}  // namespace lirvox::tools
