// Failed assertions that a release build must report too.
#pragma once

namespace lirvox {

/// Prints "Assertion failed: TEXT, file SOURCE, line LINE" to the standard error
/// stream and ends the process. For states in which nothing can work, such as a
/// platform library built without what the recognizer needs.
[[noreturn]] void failAssertion(const char* text, const char* source, int line);

}  // namespace lirvox
