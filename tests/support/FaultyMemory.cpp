// An operator new that may fail. For the programs of single tests: it replaces the usual one.
#include <cstdlib>
#include <new>

#include "tests/support/Faults.h"

// Compilers that see through these would warn of what they are made of.
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* const memory = lirvox::test::faultIsDue() ? nullptr : std::malloc(size);
  return memory ? memory : throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return lirvox::test::faultIsDue() ? nullptr : std::malloc(size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
