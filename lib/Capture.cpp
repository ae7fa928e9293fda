// One capture: its samples, how far they are analysed, and how it ends.
#include "lib/Capture.h"

#include <exception>
#include <thread>
#include <utility>

#include "lib/LirvoxSettings.h"

namespace lirvox {

std::size_t blockSizeInBytes() {
  return static_cast<std::size_t>(LirvoxSettings::minimumBufferSizeForMiniSpectogram()) * 4;
}

bool Capture::hasBlock() const {
  return buffer.size() >= consumed.load() + blockSizeInBytes();
}

void Capture::deliver(const void* bytes, std::size_t count, std::size_t limitInBytes) {
  const std::size_t before = buffer.size();
  try {
    buffer.append(bytes, count);
  } catch (const std::exception&) {
    // No memory, and nobody to throw at. What was heard until here is looked up.
    limitReached->wake();
    return;
  }
  const std::size_t after = before + count;
  if (before / blockSizeInBytes() != after / blockSizeInBytes()) progress->wake();
  if (after >= limitInBytes) limitReached->wake();
}

void Capture::end() {
  recording.store(false);
  progress->wake();
}

void Capture::cancel() {
  cancelled.store(true);
  end();
}

void CaptureSlot::replace(std::shared_ptr<Capture> capture) {
  raw_.store(capture.get());
  // Whoever entered before the store may still use the old capture; who enters later
  // sees the new one. The wait is as long as one delivery.
  while (users_.load() != 0) std::this_thread::yield();
  owner_ = std::move(capture);
}

}  // namespace lirvox
