// Errors at the C boundary: exceptions inside, codes and texts outside.
#pragma once

#include <stdexcept>
#include <string>

#include "bindings/c/lirvox_c.h"

namespace lirvox::c {

/// What a function of the interface throws to return `status` with a text.
class Failure : public std::runtime_error {
 public:
  Failure(lirvox_status status, const std::string& text)
      : std::runtime_error(text), status_(status) {}
  lirvox_status status() const { return status_; }

 private:
  const lirvox_status status_;
};

/// Notes the exception that is being handled as this thread's last error.
lirvox_status noteException() noexcept;

/// Runs the body of a function: no exception gets out.
template <typename Body>
lirvox_status guarded(Body&& body) noexcept {
  try {
    body();
    return LIRVOX_OK;
  } catch (...) {
    return noteException();
  }
}

/// The same for functions with a result, which is `otherwise` on failure.
template <typename Result, typename Body>
Result guarded(Result otherwise, Body&& body) noexcept {
  Result result = otherwise;
  guarded([&] { result = body(); });
  return result;
}

/// `pointer`, which must not be null.
template <typename Value>
Value* required(Value* pointer, const char* name) {
  if (!pointer) throw Failure(LIRVOX_INVALID_ARGUMENT, std::string(name) + " is NULL");
  return pointer;
}

/// A copy for the caller to free with `lirvox_free`.
char* ownedCopy(const std::string& text);

}  // namespace lirvox::c
