// What the program says to people.
#include "tools/Console.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <iostream>

#include <poll.h>
#include <unistd.h>

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

std::string shortened(const std::string& text, std::size_t most) {
  std::size_t characters = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    // All bytes of a character but the first are 10xxxxxx.
    if ((text[i] & 0xC0) != 0x80 && ++characters > most) return text.substr(0, i) + "...";
  }
  return text;
}

bool outputIsClosed() {
  pollfd output{STDOUT_FILENO, 0, 0};
  return ::poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0;
}

}  // namespace lirvox::tools
