// The Linux services, chosen here and nowhere else.
#include <algorithm>
#include <cerrno>
#include <iostream>
#include <mutex>
#include <syncstream>
#include <thread>
#include <utility>

#include <unistd.h>

#include "lib/platform/Platform.h"
#include "lib/platform/PulseAudio.h"
#include "lib/platform/linux/AsioTaskQueues.h"
#include "lib/platform/linux/CurlHttpSession.h"
#include "lib/platform/linux/JsonUserDefaults.h"
#include "lib/platform/linux/PcmConverter.h"
#include "lib/platform/linux/XdgDirectories.h"

namespace lirvox::platform {
namespace {

class SystemClock : public Clock {
 public:
  Date now() const override { return std::chrono::system_clock::now(); }
};

class StandardErrorLog : public Log {
 public:
  void write(std::string_view line) override { std::osyncstream(std::cerr) << line << '\n'; }
};

}  // namespace

Platform systemPlatform(const std::string& applicationName) {
  const std::string name =
      applicationName.empty() ? program_invocation_short_name : applicationName;
  Platform platform;
  platform.mainQueue = makeThreadedQueue("lirvox-main", 1);
  // A pass needs one thread and never waits on it, so a few serve many captures.
  const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 2U, 4U);
  platform.globalQueue = makeThreadedQueue("lirvox-work", threads);
  platform.makeSerialQueue = [pool = platform.globalQueue](const std::string&) {
    return makeSerialQueueOn(pool);
  };
  platform.clock = std::make_shared<SystemClock>();
  platform.log = std::make_shared<StandardErrorLog>();
  platform.directories = std::make_shared<XdgDirectories>(name);
  platform.userDefaults = std::make_shared<JsonUserDefaults>(
      platform.directories->configurationDirectory() + "/defaults.json");
  platform.makeHttpSession = [makeQueue = platform.makeSerialQueue,
                              folder = platform.directories->cachesDirectory()](
                                 const HttpSessionConfiguration& configuration) {
    return std::make_shared<CurlHttpSession>(configuration, makeQueue("lirvox-http"), folder);
  };
  platform.audioSession = std::make_shared<NullAudioSession>();
#if LIRVOX_WITH_PULSE
  PulseAudioNames names;
  names.application = name;
  usePulseAudio(platform, names);
#endif
  platform.makeAudioConverter = makePcmConverter;
  return platform;
}

}  // namespace lirvox::platform
