// The error record that operations fill which take a place for an error.
#pragma once

#include <cstdint>
#include <string>

namespace lirvox {

/// Why an operation failed. Codes are unique within a domain only.
struct LirvoxError {
  std::string domain;                ///< who names the codes
  std::int32_t code = 0;             ///< within the domain
  std::string localizedDescription;  ///< for people
};

}  // namespace lirvox
