// The platform in use.
#include "lib/platform/Platform.h"

#include <utility>

#include "lib/platform/Mutex.h"

namespace lirvox::platform {
namespace {

struct Installed {
  Mutex mutex;
  std::shared_ptr<const Platform> platform LIRVOX_GUARDED_BY(mutex);
};

// Never destroyed: threads of the platform may still ask for it while the process ends.
Installed& installed() {
  static auto* const instance = new Installed;
  return *instance;
}

}  // namespace

void install(Platform platform) {
  auto replacement = std::make_shared<const Platform>(std::move(platform));
  const MutexLock lock(installed().mutex);
  installed().platform.swap(replacement);
}

std::shared_ptr<const Platform> current() {
  const MutexLock lock(installed().mutex);
  auto& platform = installed().platform;
  if (!platform) platform = std::make_shared<const Platform>(systemPlatform());
  return platform;
}

void log(std::string_view line) {
  current()->log->write(line);
}

}  // namespace lirvox::platform
