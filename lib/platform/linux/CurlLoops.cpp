// The loops of all sessions, which end before the process does.
#include "lib/platform/linux/CurlLoops.h"

#include <chrono>
#include <cstdlib>
#include <mutex>
#include <vector>

#include <curl/curl.h>
#include <unistd.h>

#include "lib/platform/Mutex.h"
#include "lib/platform/linux/CurlLoop.h"

namespace lirvox::platform {
namespace {

// How long the process's end may be held up, by a block of the host's that does not return.
constexpr std::chrono::seconds kPatience{5};

struct Running {
  Mutex mutex;
  std::vector<std::weak_ptr<CurlLoop>> loops LIRVOX_GUARDED_BY(mutex);
  bool isOver LIRVOX_GUARDED_BY(mutex) = false;
  const pid_t process = ::getpid();
};

// Never destroyed: objects of the host's that are may still ask for something.
Running& running() {
  static auto* const loops = new Running;
  return *loops;
}

void endAll() {
  Running& all = running();
  if (::getpid() != all.process) return;  // a forked child has no threads to end
  std::vector<std::weak_ptr<CurlLoop>> loops;
  {
    const MutexLock lock(all.mutex);
    all.isOver = true;
    loops.swap(all.loops);
  }
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  for (const auto& known : loops) {
    if (const auto loop = known.lock()) loop->askToStop();
  }
  for (const auto& known : loops) {
    if (const auto loop = known.lock()) loop->stopBy(deadline);
  }
}

}  // namespace

void CurlLoops::prepare() {
  static std::once_flag prepared;
  std::call_once(prepared, [] {
    running();
    curl_global_init(CURL_GLOBAL_DEFAULT);
    // After that of the library for https, which has just been registered: so it runs before.
    std::atexit(endAll);
  });
}

bool CurlLoops::enter(const std::shared_ptr<CurlLoop>& loop) {
  Running& all = running();
  const MutexLock lock(all.mutex);
  if (all.isOver) return false;
  std::erase_if(all.loops, [](const auto& known) { return known.expired(); });
  all.loops.push_back(loop);
  return true;
}

}  // namespace lirvox::platform
