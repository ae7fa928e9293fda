// What the audio thread does between a delivery and its delegate: no allocation, no lock, no log.
// Not for sanitizers, which bring allocators and locks of their own.
#include <cstdlib>
#include <thread>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include "lib/audio/LirvoxMicrophone.h"
#include "tests/support/PcmStream.h"
#include "tests/support/ScriptedAudio.h"

namespace {
thread_local bool counting = false;
thread_local int allocations = 0;
thread_local int locks = 0;
}  // namespace

// Visible, so that the C++ library calls these too.
#pragma GCC visibility push(default)
extern "C" {
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
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
int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  using Lock = int (*)(pthread_mutex_t*);
  static const auto lock = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
  locks += counting;
  return lock(mutex);
}
}
#pragma GCC visibility pop

namespace lirvox {
namespace {

struct Receiver : LirvoxMicrophoneAudioDelegate {
  void hasAudioReceived(LirvoxMicrophone&, float**, std::uint32_t bufferSize,
                        std::uint32_t) override {
    frames += bufferSize;
  }
  std::uint32_t frames = 0;
};

TEST(RenderPathTest, NeitherAllocatesNorLocksNorLogs) {
  test::ScriptedPlatform platform;
  const auto receiver = std::make_shared<Receiver>();
  const auto microphone = LirvoxMicrophone::microphoneWithDelegate(receiver, true);
  test::AudioScript& script = *platform.script;
  script.samples.resize(1024);
  std::jthread([&] {
    std::uint32_t flags = 0;
    counting = true;
    for (std::uint32_t frames = 1; frames <= 1024; ++frames) script.callback(flags, {}, 1, frames);
    counting = false;
    EXPECT_EQ(allocations + locks, 0);
    counting = true;
    platform.log->write("counted");
    counting = false;
    EXPECT_TRUE(allocations > 0 && locks > 0) << "the counter does not count";
  }).join();
  EXPECT_EQ(receiver->frames, 512U * 1025);
  EXPECT_EQ(platform.log->lines().size(), 1U);
}

TEST(RenderPathTest, ResamplingAllocatesNothing) {
  for (const double rate : {8000.0, 44100.0, 48000.0, 192000.0}) {
    const auto from = test::pcm(rate, 2, 16, 4);
    const auto to = test::pcm(11025, 1, 32, 12);
    test::PcmStream input(from, static_cast<std::size_t>(rate * 10));
    test::PcmStream output(to, 1024);
    platform::AudioStatus status = 0;
    const auto converter = platform::systemPlatform().makeAudioConverter(from, to, status);
    auto list = output.list(0, 1024);
    allocations = 0;
    counting = true;
    for (std::uint32_t i = 0; i < 200; ++i) {
      std::uint32_t count = 1 + i * 617 % 1024;
      list.buffers[0].dataByteSize = 4096;
      converter->fillComplexBuffer(test::PcmStream::serve, &input, count, list, nullptr);
    }
    counting = false;
    EXPECT_EQ(allocations, 0) << rate << " Hz";
  }
}

}  // namespace
}  // namespace lirvox
