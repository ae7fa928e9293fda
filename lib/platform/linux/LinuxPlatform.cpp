// The Linux services, chosen here and nowhere else.
#include <cerrno>
#include <iostream>
#include <syncstream>
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
  // Passes run one after the other. On one thread, what they allocate and free stays in one
  // of the allocator's arenas; on several, each would keep as much for itself.
  platform.globalQueue = makeThreadedQueue("lirvox-work", 1);
  platform.makeSerialQueue = [pool = makeThreadedQueue("lirvox-serial", 2)](const std::string&) {
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
