// The audio session: who hears of its events.
#include "lib/platform/AudioSession.h"

#include <utility>

#include "lib/platform/Mutex.h"

namespace lirvox::platform {

struct AudioSession::Observers {
  struct Registered {
    const AudioSessionObserver* identity;
    std::weak_ptr<AudioSessionObserver> observer;
  };

  std::vector<std::shared_ptr<AudioSessionObserver>> living() {
    std::vector<std::shared_ptr<AudioSessionObserver>> found;
    const MutexLock lock(mutex);
    for (const Registered& entry : registered) {
      if (auto observer = entry.observer.lock()) found.push_back(std::move(observer));
    }
    return found;
  }

  Mutex mutex;
  std::vector<Registered> registered LIRVOX_GUARDED_BY(mutex);
};

AudioSession::AudioSession() : observers_(std::make_shared<Observers>()) {}

AudioSessionInput AudioSession::currentInput() {
  AudioSessionRoute route = currentRoute();
  AudioSessionInput input;
  if (!route.inputs.empty()) input.port = std::move(route.inputs.front());
  input.dataSource = inputDataSource();
  return input;
}

void AudioSession::addObserver(std::weak_ptr<AudioSessionObserver> observer) {
  const auto strong = observer.lock();
  if (!strong) return;
  const MutexLock lock(observers_->mutex);
  observers_->registered.push_back({strong.get(), std::move(observer)});
}

// By identity: an observer removes itself while it is destroyed, when its weak references
// have expired already.
void AudioSession::removeObserver(const AudioSessionObserver* observer) {
  const MutexLock lock(observers_->mutex);
  std::erase_if(observers_->registered,
                [observer](const auto& entry) { return entry.identity == observer; });
}

void AudioSession::postInterruption(const AudioSessionInterruption& interruption) {
  for (const auto& observer : observers_->living()) {
    observer->audioSessionWasInterrupted(interruption);
  }
}

void AudioSession::postRouteChange() {
  for (const auto& observer : observers_->living()) observer->audioSessionRouteChanged();
}

}  // namespace lirvox::platform
