// What libcurl and libpulse ask of the C library, which may fail. For the programs of single
// tests: these come before the library's own, and fail for nobody but those two.
#include <string_view>

#include "tests/support/FaultyCalls.h"

extern "C" int isfdtype(int descriptor, int type);

using namespace lirvox::test;

namespace {

constexpr int kTcp = 6;

bool isOf(const char* library, const void* caller) {
  Dl_info info;
  return dladdr(caller, &info) != 0 &&
         std::string_view(info.dli_fname).find(library) != std::string_view::npos;
}

// Servers in the same process are served well.
bool fails(const void* caller) {
  return (isOf("libcurl", caller) || isOf("libpulse", caller)) && faultOfAnyThreadIsDue();
}

bool isSocket(int descriptor) {
  constexpr int kSocketType = 0140000;
  return isfdtype(descriptor, kSocketType) == 1;
}

}  // namespace

#define CALLER __builtin_return_address(0)
#define FAULTY(...) FAULTY_CALL(fails(CALLER), __VA_ARGS__)

// Not among them: what a valid descriptor is never refused; what wakes a thread through a pipe; and
// libpulse's `poll`, which only fails for want of the kernel's own memory: its thread then ends,
// and nobody is told.
#pragma GCC visibility push(default)
extern "C" {
// What libcurl has the library open for it is told from what a server opens by the protocol.
FAULTY_CALL(protocol == kTcp ? faultOfAnyThreadIsDue() : fails(CALLER), int, socket,
            (int domain, int type, int protocol), (domain, type, protocol), -1, EMFILE)
FAULTY(int, socketpair, (int domain, int type, int protocol, int* pair),
       (domain, type, protocol, pair), -1, EMFILE)
FAULTY(int, pipe, (int* pair), (pair), -1, EMFILE)
FAULTY(int, pipe2, (int* pair, int flags), (pair, flags), -1, EMFILE)
FAULTY(int, connect, (int socket, const void* address, unsigned size), (socket, address, size), -1,
       ECONNREFUSED)
FAULTY(long, recv, (int socket, void* bytes, Size count, int flags), (socket, bytes, count, flags),
       -1, ECONNRESET)
FAULTY(long, recvmsg, (int socket, void* message, int flags), (socket, message, flags), -1,
       ECONNRESET)
FAULTY_CALL(isSocket(socket) && fails(CALLER), long, send,
            (int socket, const void* bytes, Size count, int flags), (socket, bytes, count, flags),
            -1, ECONNRESET)
FAULTY(long, sendmsg, (int socket, const void* message, int flags), (socket, message, flags), -1,
       ECONNRESET)
FAULTY_CALL(isOf("libcurl", CALLER) && fails(CALLER), int, poll,
            (void* descriptors, unsigned long count, int milliseconds),
            (descriptors, count, milliseconds), -1, ENOMEM)
FAULTY(int, open64, (const char* path, int flags, unsigned mode), (path, flags, mode), -1, EMFILE)
FAULTY(void*, fopen64, (const char* path, const char* mode), (path, mode), nullptr, EMFILE)
FAULTY(int, pthread_create,
       (unsigned long* thread, const void* attributes, void* (*function)(void*), void* argument),
       (thread, attributes, function, argument), EAGAIN, EAGAIN)
}
#pragma GCC visibility pop
