// Symbol visibility of the public interface.
#pragma once

#if defined(LIRVOX_STATIC)
#define LIRVOX_EXPORT
#else
#define LIRVOX_EXPORT __attribute__((visibility("default")))
#endif
