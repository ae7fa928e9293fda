// What the audio thread does between a delivery and its delegate: no allocation, no lock, no log.
#include <cstdlib>
#include <thread>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include "lib/audio/LirvoxMicrophone.h"
#include "tests/support/PcmStream.h"
#include "tests/support/ScriptedAudio.h"

// The sanitizers bring allocators and locks of their own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define LIRVOX_CAN_COUNT 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define LIRVOX_CAN_COUNT 0
#endif
#endif
#ifndef LIRVOX_CAN_COUNT
#define LIRVOX_CAN_COUNT 1
#endif

namespace {
thread_local bool counting = false;
thread_local int allocations = 0;
thread_local int locks = 0;
}  // namespace

#if LIRVOX_CAN_COUNT
// Visible, so that the C++ library calls these too.
#pragma GCC visibility push(default)
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);
void* malloc(std::size_t size) noexcept {
  allocations += counting;
  return __libc_malloc(size);
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
#endif

namespace lirvox {
namespace {

class Receiver : public LirvoxMicrophoneAudioDelegate {
 public:
  void hasAudioReceived(LirvoxMicrophone&, float** buffers, std::uint32_t bufferSize,
                        std::uint32_t) override {
    std::memcpy(&last, buffers[0] + bufferSize - 1, 4);
    ++calls;
  }
  std::int32_t last = 0;
  int calls = 0;
};

TEST(RenderPathTest, NeitherAllocatesNorLocksNorLogs) {
  if (!LIRVOX_CAN_COUNT) GTEST_SKIP() << "the sanitizer replaces what is counted";
  test::ScriptedPlatform platform;
  const auto receiver = std::make_shared<Receiver>();
  const auto microphone = LirvoxMicrophone::microphoneWithDelegate(receiver, true);
  test::AudioScript& script = *platform.script;
  std::thread audio([&] {
    for (std::uint32_t frames = 1; frames <= 1024; ++frames) {
      script.samples.assign(frames, static_cast<std::int32_t>(frames));
      std::uint32_t flags = 0;
      counting = true;
      script.callback(flags, {}, platform::audioUnitInputBus, frames);
      counting = false;
    }
    EXPECT_EQ(allocations, 0);
    EXPECT_EQ(locks, 0);
    counting = true;
    { const std::string counted(100, 'x'); }
    platform.log->write("counted");
    microphone->device();
    counting = false;
    EXPECT_GT(allocations, 0) << "the counter does not count";
    EXPECT_GT(locks, 0) << "the counter does not count";
  });
  audio.join();
  EXPECT_EQ(receiver->calls, 1024);
  EXPECT_EQ(receiver->last, 1024);
  EXPECT_EQ(platform.log->lines().size(), 1U);
}

TEST(RenderPathTest, ResamplingAllocatesNothing) {
  if (!LIRVOX_CAN_COUNT) GTEST_SKIP() << "the sanitizer replaces what is counted";
  for (const double rate : {8000.0, 44100.0, 48000.0, 192000.0}) {
    const auto from = test::pcm(rate, 2, 16, 4);
    const auto to = test::pcm(11025, 1, 32, 12);
    test::PcmStream input(from, static_cast<std::size_t>(rate * 10));
    test::PcmStream output(to, 1024);
    platform::AudioStatus status = 0;
    const auto converter = platform::systemPlatform().makeAudioConverter(from, to, status);
    auto list = output.list(0, 1024);
    allocations = 0;
    for (std::uint32_t i = 0; i < 200; ++i) {
      std::uint32_t count = 1 + i * 617 % 1024;
      list.buffers[0].dataByteSize = 4096;
      counting = true;
      converter->fillComplexBuffer(test::PcmStream::serve, &input, count, list, nullptr);
      counting = false;
    }
    EXPECT_EQ(allocations, 0) << rate << " Hz";
  }
}

}  // namespace
}  // namespace lirvox
