// The platform in use.
#include "lib/platform/Platform.h"

#include <mutex>
#include <utility>

namespace lirvox::platform {
namespace {

struct Installed {
  std::mutex mutex;
  std::shared_ptr<const Platform> platform;  // guarded by mutex
};

// Never destroyed: threads of the platform may still ask for it while the process ends.
Installed& installed() {
  static auto* const instance = new Installed;
  return *instance;
}

}  // namespace

void install(Platform platform) {
  auto replacement = std::make_shared<const Platform>(std::move(platform));
  const std::lock_guard lock(installed().mutex);
  installed().platform.swap(replacement);
}

std::shared_ptr<const Platform> current() {
  const std::lock_guard lock(installed().mutex);
  auto& platform = installed().platform;
  if (!platform) platform = std::make_shared<const Platform>(systemPlatform());
  return platform;
}

void log(std::string_view line) {
  current()->log->write(line);
}

}  // namespace lirvox::platform
