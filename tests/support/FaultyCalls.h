// How operations of the C library are replaced by ones that may fail. Without the headers that
// declare them: their types and promises differ from system to system.
#pragma once

#include <cerrno>
#include <cstddef>

#include <dlfcn.h>

namespace lirvox::test {

using Size = std::size_t;

// As Faults.h has them, which would bring the operations' own headers.
bool faultIsDue() noexcept;
bool faultOfAnyThreadIsDue() noexcept;

template <typename Function>
Function* realOne(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace lirvox::test

#define FAULTY_CALL(isDue, result, name, parameters, arguments, failure, reason) \
  result name parameters {                                                       \
    using lirvox::test::realOne;                                                 \
    static auto* const real = realOne<result parameters>(#name);                 \
    if (!(isDue)) return real arguments;                                         \
    errno = reason;                                                              \
    return failure;                                                              \
  }
