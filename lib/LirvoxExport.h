// Symbol visibility of the public interface.
#pragma once

// For what is declared within an exported class and defined out of sight.
#define LIRVOX_HIDDEN __attribute__((visibility("hidden")))

#if defined(LIRVOX_STATIC)
#define LIRVOX_EXPORT
#else
#define LIRVOX_EXPORT __attribute__((visibility("default")))
#endif
