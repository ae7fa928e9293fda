// What the program says to people.
#include "tools/Console.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <iostream>

namespace lirvox::tools {

void complain(const std::string& text) {
  std::cerr << "lirvox: " << text << '\n';
}

std::string clockTime(double seconds) {
  const long long all = std::llround(std::floor(std::abs(seconds)));
  std::array<char, 48> text{};
  const char* const sign = seconds < 0 ? "-" : "";
  if (all >= 3600) {
    std::snprintf(text.data(), text.size(), "%s%lld:%02lld:%02lld", sign, all / 3600, all / 60 % 60,
                  all % 60);
  } else {
    std::snprintf(text.data(), text.size(), "%s%lld:%02lld", sign, all / 60, all % 60);
  }
  return text.data();
}

}  // namespace lirvox::tools
