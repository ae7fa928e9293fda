// What a verification has found so far.
#pragma once

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

#include "catalog/Verify.h"

namespace lirvox::catalog {

/// Counts violations by kind, and keeps the first example of each.
class Findings {
 public:
  /// `example` is a text, or makes one.
  template <typename Example>
  void add(const char* what, const Example& example) {
    const auto known = std::find_if(found_.begin(), found_.end(),
                                    [&](const Violation& v) { return v.what == what; });
    if (known != found_.end()) {
      ++known->count;
    } else if constexpr (std::is_invocable_v<Example>) {
      found_.push_back({what, 1, example()});
    } else {
      found_.push_back({what, 1, example});
    }
  }

  const std::vector<Violation>& all() const { return found_; }

 private:
  std::vector<Violation> found_;
};

}  // namespace lirvox::catalog
