// The Linux services, chosen here and nowhere else.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <syncstream>
#include <thread>
#include <utility>

#include <pwd.h>
#include <unistd.h>

#include "lib/platform/EqualFormatConverter.h"
#include "lib/platform/Platform.h"
#include "lib/platform/linux/AsioTaskQueues.h"

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

// An environment variable that is set and not empty, else an empty string.
std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value ? value : "";
}

// A base folder as XDG defines them: relative settings are ignored.
std::string xdgBase(const char* variable, const char* belowHome) {
  std::string base = environment(variable);
  if (!base.empty() && base.front() == '/') return base;
  std::string home = environment("HOME");
  if (home.empty()) {
    const passwd* const user = ::getpwuid(::getuid());
    home = user ? user->pw_dir : "/tmp";
  }
  return home + '/' + belowHome;
}

// As an absolute path without a trailing slash; a relative one starts where the program did.
std::string folderPath(const std::string& setting) {
  std::string path = std::filesystem::absolute(setting);
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

class XdgDirectories : public Directories {
 public:
  explicit XdgDirectories(const std::string& applicationName) {
    const std::string own = environment("LIRVOX_CACHES_DIR");
    caches_ = own.empty() ? folderPath(xdgBase("XDG_CACHE_HOME", ".cache")) + '/' + applicationName
                          : folderPath(own);
  }

  std::string cachesDirectory() const override { return caches_; }

 private:
  std::string caches_;
};

std::unique_ptr<AudioConverter> makeConverter(const AudioStreamBasicDescription& inputFormat,
                                              const AudioStreamBasicDescription& outputFormat,
                                              AudioStatus& status) {
  const bool usable = inputFormat == outputFormat && inputFormat.bytesPerPacket > 0 &&
                      inputFormat.channelsPerFrame > 0;
  status = usable ? audioNoError : audioFormatError;
  return usable ? std::make_unique<EqualFormatConverter>(inputFormat) : nullptr;
}

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
  platform.audioSession = std::make_shared<NullAudioSession>();
  platform.makeAudioConverter = makeConverter;
  return platform;
}

}  // namespace lirvox::platform
