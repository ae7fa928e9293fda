// What the audio thread does with a delivery: no allocation, no lock, no log, and no system call
// but to wake who waits. Not for sanitizers, which bring allocators and locks of their own.
#include <csignal>

#include <dlfcn.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "lib/LirvoxAudioFFT.h"
#include "tests/support/ControllerTest.h"
#include "tests/support/PcmStream.h"

namespace {
thread_local bool counting = false;
thread_local int allocations = 0;
thread_local int locks = 0;
thread_local int systemCalls = 0;
}  // namespace

// Visible, so that the C++ library calls these too.
#pragma GCC visibility push(default)
extern "C" {
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);
void* malloc(std::size_t size) noexcept {
  return realloc(nullptr, size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
  allocations += counting;
  return __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) noexcept {
  allocations += counting;
  return __libc_realloc(memory, size);
}
void free(void* memory) noexcept {
  allocations += counting;
  __libc_free(memory);
}
int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  using Lock = int (*)(pthread_mutex_t*);
  static const auto lock = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
  locks += counting;
  return lock(mutex);
}
}
#pragma GCC visibility pop

namespace lirvox::test {
namespace {

// The allocations, locks and system calls of `work`.
template <typename Work>
int costOf(const Work& work) {
  allocations = locks = systemCalls = 0;
  counting = true;
  work();
  counting = false;
  return allocations + locks + systemCalls;
}

// From now on this thread's system calls are counted instead of made, but for the write that
// raises an event, and its end. False where the system has no such filters.
bool countSystemCalls() {
  struct sigaction action {};
  action.sa_handler = [](int) { systemCalls += counting; };
  sigaction(SIGSYS, &action, nullptr);
  constexpr auto load = [](std::size_t offset) {
    return sock_filter{BPF_LD | BPF_W | BPF_ABS, 0, 0, static_cast<std::uint32_t>(offset)};
  };
  constexpr auto skipUnless = [](std::uint32_t value, std::uint8_t count) {
    return sock_filter{BPF_JMP | BPF_JEQ | BPF_K, 0, count, value};
  };
  constexpr sock_filter kAllow{BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW};
  sock_filter filter[] = {load(offsetof(seccomp_data, nr)),
                          skipUnless(SYS_exit, 1),
                          kAllow,
                          skipUnless(SYS_rt_sigreturn, 1),
                          kAllow,
                          skipUnless(SYS_write, 3),
                          load(offsetof(seccomp_data, args[2])),
                          skipUnless(sizeof(std::uint64_t), 1),
                          kAllow,
                          {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_TRAP}};
  const sock_fprog program{std::size(filter), filter};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

class RecognizerRenderPathTest : public ControllerTest {};

TEST_F(RecognizerRenderPathTest, ADeliveryOnlyCopiesAndWakes) {
  script_->samples = song_;
  platform_.useRealQueues();  // for their wakers
  install();
  start();
  bool isFiltered = false;
  int made = -1;
  int counted = -1;
  std::jthread([&] {
    std::free(std::realloc(nullptr, 1));  // or the allocator asks the system as the thread ends
    isFiltered = countSystemCalls();
    std::uint32_t flags = 0;
    made = costOf([&] {
      for (std::uint32_t i = 0, size = 1; i < song_.size(); size = 1 + i * 617 % 1024) {
        script_->callback(flags, {}, 1, size);
        i += size;
      }
    });
    counted = costOf([] { syscall(SYS_getppid); });
  }).join();
  EXPECT_EQ(made, 0);
  costOf([] { platform::log("counted"); });
  EXPECT_TRUE(allocations > 0 && locks > 0) << "the counter does not count";
  EXPECT_EQ(delegate_->waitForCalls(1).size(), 1U);
  if (!isFiltered) GTEST_SKIP() << "system calls cannot be counted";
  EXPECT_EQ(counted, 1) << "the counter does not count";
}

TEST(RenderPathTest, ATransformAsksForNothing) {
  LirvoxAudioFFT engine;
  const std::vector<double> frame(512, 1.0);
  EXPECT_EQ(costOf([&] { engine.fft(frame.data(), 9); }), 0);
}

TEST(RenderPathTest, ResamplingNeitherAllocatesNorLocks) {
  for (const double rate : {8000.0, 44099.0, 44100.0, 48000.0, 192000.0}) {
    const auto from = pcm(rate, 2, 16, 4);
    const auto to = pcm(11025, 1, 32, 12);
    PcmStream input(from, static_cast<std::size_t>(rate * 10));
    PcmStream output(to, 1024);
    platform::AudioStatus status = 0;
    const auto converter = platform::systemPlatform().makeAudioConverter(from, to, status);
    auto list = output.list(0, 1024);
    const auto fill = [&](std::uint32_t count) {
      list.buffers[0].dataByteSize = 4096;
      converter->fillComplexBuffer(PcmStream::serve, &input, count, list, nullptr);
    };
    for (std::uint32_t i = 0; i < 200; ++i) {
      EXPECT_EQ(costOf([&] { fill(1 + i * 617 % 1024); }), 0) << rate << " Hz";
    }
  }
}

}  // namespace
}  // namespace lirvox::test
