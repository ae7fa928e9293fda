// What goes wrong with a catalogue.
#pragma once

#include <stdexcept>

namespace lirvox::catalog {

/// A database that cannot be read, written or understood; `what()` names the file and
/// the reason.
class CatalogError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace lirvox::catalog
