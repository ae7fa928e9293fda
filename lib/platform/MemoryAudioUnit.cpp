// An audio unit that captures nothing and delivers samples from memory.
#include "lib/platform/MemoryAudioUnit.h"

#include <algorithm>
#include <cstring>
#include <thread>
#include <utility>

#include "lib/platform/BlockedSignals.h"
#include "lib/platform/Mutex.h"

namespace lirvox::platform {
namespace {

AudioStreamBasicDescription memoryFormat() {
  return interleavedPcm(11025, 1, 32);
}

}  // namespace

struct MemoryAudioUnit::Player {
  Player(Samples source, std::vector<std::uint32_t> sizes)
      : samples(std::move(source)), deliverySizes(std::move(sizes)) {
    for (std::uint32_t& size : deliverySizes) size = std::clamp(size, 1U, maximumFrames);
    if (deliverySizes.empty()) deliverySizes.push_back(maximumFrames);
  }

  void play();
  void deliver() LIRVOX_REQUIRES(mutex);
  void halt() LIRVOX_REQUIRES(mutex);
  bool hasEnded() const { return position >= samples->size(); }

  // Constant after construction.
  const Samples samples;
  std::vector<std::uint32_t> deliverySizes;

  Mutex mutex;
  Condition changed;
  std::thread thread LIRVOX_GUARDED_BY(mutex);
  bool initialized LIRVOX_GUARDED_BY(mutex) = false;
  bool running LIRVOX_GUARDED_BY(mutex) = false;
  bool inCallback LIRVOX_GUARDED_BY(mutex) = false;
  bool quit LIRVOX_GUARDED_BY(mutex) = false;
  std::size_t nextSize LIRVOX_GUARDED_BY(mutex) = 0;
  std::uint64_t framesSinceStart LIRVOX_GUARDED_BY(mutex) = 0;

  // Touched by the audio thread, and under mutex while no callback runs.
  InputCallback callback;
  std::size_t position = 0;
};

void MemoryAudioUnit::Player::play() {
  const MutexLock lock(mutex);
  while (true) {
    while (!quit && (!running || hasEnded())) changed.wait(mutex);
    if (quit) return;
    deliver();
  }
}

void MemoryAudioUnit::Player::deliver() {
  const std::size_t left = samples->size() - position;
  const std::uint32_t size = deliverySizes[nextSize++ % deliverySizes.size()];
  const auto frames = static_cast<std::uint32_t>(std::min<std::size_t>(size, left));
  const AudioTimeStamp timeStamp{static_cast<double>(framesSinceStart), 0};
  inCallback = true;
  mutex.unlock();
  RenderActionFlags flags = 0;
  if (callback) callback(flags, timeStamp, audioUnitInputBus, frames);
  mutex.lock();
  inCallback = false;
  position += frames;
  framesSinceStart += frames;
  changed.notifyAll();
}

void MemoryAudioUnit::Player::halt() {
  running = false;
  if (thread.get_id() == std::this_thread::get_id()) return;
  while (inCallback) changed.wait(mutex);
}

MemoryAudioUnit::MemoryAudioUnit(Samples samples, std::vector<std::uint32_t> deliverySizes)
    : player_(std::make_shared<Player>(
          samples ? std::move(samples) : std::make_shared<const std::vector<std::int32_t>>(),
          std::move(deliverySizes))) {}

MemoryAudioUnit::~MemoryAudioUnit() {
  std::thread thread;
  {
    const MutexLock lock(player_->mutex);
    player_->halt();
    player_->quit = true;
    player_->changed.notifyAll();
    thread.swap(player_->thread);
  }
  if (!thread.joinable()) return;
  if (thread.get_id() == std::this_thread::get_id()) {
    thread.detach();
  } else {
    thread.join();
  }
}

AudioStatus MemoryAudioUnit::inputStreamFormat(AudioStreamBasicDescription& format) {
  format = memoryFormat();
  return audioNoError;
}

AudioStatus MemoryAudioUnit::setClientStreamFormat(const AudioStreamBasicDescription&) {
  return audioNoError;
}

AudioStatus MemoryAudioUnit::setDeliveredStreamFormat(const AudioStreamBasicDescription& format) {
  return format == memoryFormat() ? audioNoError : audioFormatError;
}

AudioStatus MemoryAudioUnit::maximumFramesPerSlice(std::uint32_t& frames) {
  frames = maximumFrames;
  return audioNoError;
}

AudioStatus MemoryAudioUnit::setInputCallback(InputCallback callback) {
  const MutexLock lock(player_->mutex);
  if (player_->running || player_->inCallback) return audioStateError;
  player_->callback = std::move(callback);
  return audioNoError;
}

AudioStatus MemoryAudioUnit::initialize() {
  const MutexLock lock(player_->mutex);
  player_->initialized = true;
  return audioNoError;
}

AudioStatus MemoryAudioUnit::uninitialize() {
  const MutexLock lock(player_->mutex);
  player_->halt();
  player_->initialized = false;
  return audioNoError;
}

AudioStatus MemoryAudioUnit::start() {
  const MutexLock lock(player_->mutex);
  if (!player_->initialized) return audioStateError;
  if (player_->running) return audioNoError;
  player_->running = true;
  player_->framesSinceStart = 0;
  if (!player_->thread.joinable()) {
    const BlockedSignals quiet;
    player_->thread = std::thread([player = player_] { player->play(); });
  }
  player_->changed.notifyAll();
  return audioNoError;
}

AudioStatus MemoryAudioUnit::stop() {
  const MutexLock lock(player_->mutex);
  player_->halt();
  return audioNoError;
}

AudioStatus MemoryAudioUnit::render(RenderActionFlags&, const AudioTimeStamp&, std::uint32_t,
                                    std::uint32_t numberFrames, AudioBufferList& list) {
  if (list.buffers.empty()) return audioParameterError;
  const AudioBuffer& buffer = list.buffers.front();
  const std::size_t bytes = std::size_t{numberFrames} * sizeof(std::int32_t);
  if (numberFrames > player_->samples->size() - player_->position) return audioParameterError;
  if (buffer.dataByteSize < bytes) return audioTooManyFramesError;
  std::memcpy(buffer.data, player_->samples->data() + player_->position, bytes);
  return audioNoError;
}

}  // namespace lirvox::platform
