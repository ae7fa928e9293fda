// Errors at the C boundary: exceptions inside, codes and texts outside.
#include "bindings/c/Failure.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <new>

namespace lirvox::c {
namespace {

// Of fixed size, so that noting an error cannot fail.
thread_local std::array<char, 512> lastError{};

lirvox_status note(lirvox_status status, const char* text) noexcept {
  std::strncpy(lastError.data(), text, lastError.size() - 1);
  return status;
}

}  // namespace

lirvox_status noteException() noexcept {
  try {
    throw;
  } catch (const Failure& failure) {
    return note(failure.status(), failure.what());
  } catch (const std::bad_alloc&) {
    return note(LIRVOX_OUT_OF_MEMORY, "out of memory");
  } catch (const std::exception& error) {
    return note(LIRVOX_FAILED, error.what());
  } catch (...) {
    return note(LIRVOX_FAILED, "unknown failure");
  }
}

char* ownedCopy(const std::string& text) {
  auto* const copy = static_cast<char*>(std::malloc(text.size() + 1));
  if (!copy) throw std::bad_alloc();
  std::memcpy(copy, text.c_str(), text.size() + 1);
  return copy;
}

}  // namespace lirvox::c

const char* lirvox_last_error(void) {
  return lirvox::c::lastError.data();
}

void lirvox_free(char* string) {
  std::free(string);
}
