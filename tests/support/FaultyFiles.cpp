// The C library's file operations, which may fail. For the programs of single tests: these
// come before the library's own, also for SQLite, minizip and the C++ library.
#include "tests/support/FaultyCalls.h"

#define FAULTY(...) FAULTY_CALL(faultIsDue(), __VA_ARGS__, ENOSPC)

using namespace lirvox::test;

#pragma GCC visibility push(default)
extern "C" {
FAULTY(int, open, (const char* path, int flags, unsigned mode), (path, flags, mode), -1)
FAULTY(int, open64, (const char* path, int flags, unsigned mode), (path, flags, mode), -1)
FAULTY(int, openat, (int at, const char* path, int flags, unsigned mode), (at, path, flags, mode),
       -1)
FAULTY(int, openat64, (int at, const char* path, int flags, unsigned mode), (at, path, flags, mode),
       -1)
FAULTY(void*, fopen64, (const char* path, const char* mode), (path, mode), nullptr)
FAULTY(void*, fdopen, (int file, const char* mode), (file, mode), nullptr)
FAULTY(long, read, (int file, void* bytes, Size count), (file, bytes, count), -1)
FAULTY(long, pread, (int file, void* bytes, Size count, long at), (file, bytes, count, at), -1)
FAULTY(long, pread64, (int file, void* bytes, Size count, long at), (file, bytes, count, at), -1)
// Of many bytes it writes but a part, as where a disk is nearly full.
FAULTY(long, write, (int file, const void* bytes, Size count),
       (file, bytes, count - (count > 1000)), -1)
FAULTY(long, writev, (int file, const void* parts, int count), (file, parts, count), -1)
FAULTY(long, pwrite, (int file, const void* bytes, Size count, long at), (file, bytes, count, at),
       -1)
FAULTY(long, pwrite64, (int file, const void* bytes, Size count, long at), (file, bytes, count, at),
       -1)
FAULTY(Size, fwrite, (const void* bytes, Size size, Size count, void* file),
       (bytes, size, count, file), 0)
FAULTY(int, fcntl, (int file, int command, long argument), (file, command, argument), -1)
FAULTY(int, fcntl64, (int file, int command, long argument), (file, command, argument), -1)
FAULTY(int, flock, (int file, int operation), (file, operation), -1)
FAULTY(int, fstat, (int file, void* status), (file, status), -1)
FAULTY(int, fstat64, (int file, void* status), (file, status), -1)
FAULTY(int, fchmod, (int file, unsigned mode), (file, mode), -1)
FAULTY(int, futimens, (int file, const void* times), (file, times), -1)
FAULTY(int, ftruncate64, (int file, long size), (file, size), -1)
FAULTY(int, mkdir, (const char* path, unsigned mode), (path, mode), -1)
FAULTY(int, mkdirat, (int at, const char* path, unsigned mode), (at, path, mode), -1)
FAULTY(int, rename, (const char* from, const char* to), (from, to), -1)
FAULTY(int, renameat, (int at, const char* from, int atTo, const char* to), (at, from, atTo, to),
       -1)
FAULTY(int, unlink, (const char* path), (path), -1)
FAULTY(int, unlinkat, (int at, const char* path, int flags), (at, path, flags), -1)
// What a disk takes for these would only take time.
int fsync(int) {
  errno = ENOSPC;
  return faultIsDue() ? -1 : 0;
}
int fdatasync(int file) {
  return fsync(file);
}
}
#pragma GCC visibility pop
