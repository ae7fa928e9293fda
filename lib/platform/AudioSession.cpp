// The audio session: who hears of its events.
#include "lib/platform/AudioSession.h"

#include <algorithm>
#include <utility>

namespace lirvox::platform {

void AudioSession::addObserver(std::weak_ptr<AudioSessionObserver> observer) {
  const auto strong = observer.lock();
  if (!strong) return;
  const std::lock_guard lock(mutex_);
  registered_.push_back({strong.get(), std::move(observer)});
}

// By identity: an observer removes itself while it is destroyed, when its weak references
// have expired already.
void AudioSession::removeObserver(const AudioSessionObserver* observer) {
  const std::lock_guard lock(mutex_);
  const auto removed =
      std::remove_if(registered_.begin(), registered_.end(),
                     [observer](const Registered& entry) { return entry.identity == observer; });
  registered_.erase(removed, registered_.end());
}

void AudioSession::postInterruption(const AudioSessionInterruption& interruption) {
  for (const auto& observer : observers()) observer->audioSessionWasInterrupted(interruption);
}

void AudioSession::postRouteChange() {
  for (const auto& observer : observers()) observer->audioSessionRouteChanged();
}

std::vector<std::shared_ptr<AudioSessionObserver>> AudioSession::observers() {
  std::vector<std::shared_ptr<AudioSessionObserver>> living;
  const std::lock_guard lock(mutex_);
  for (const Registered& entry : registered_) {
    if (auto observer = entry.observer.lock()) living.push_back(std::move(observer));
  }
  return living;
}

}  // namespace lirvox::platform
