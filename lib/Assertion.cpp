// Failed assertions that a release build must report too.
#include "lib/Assertion.h"

#include <cstdio>
#include <cstdlib>

namespace lirvox {

void failAssertion(const char* text, const char* source, int line) {
  std::fprintf(stderr, "Assertion failed: %s, file %s, line %d\n", text, source, line);
  std::abort();
}

}  // namespace lirvox
