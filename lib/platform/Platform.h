// Everything the recognizer asks of an operating system, in one record.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "../LirvoxExport.h"
#include "AudioConverter.h"
#include "AudioSession.h"
#include "AudioTypes.h"
#include "AudioUnit.h"
#include "Clock.h"
#include "Directories.h"
#include "HttpSession.h"
#include "Log.h"
#include "TaskQueue.h"
#include "UserDefaults.h"

namespace lirvox::platform {

/// The services of one platform. A host that wants a service of its own takes
/// `systemPlatform()`, replaces the member and calls `install` before it first
/// touches the library.
struct Platform {
  /// Serial; runs every delegate call and the timed tasks of the recognizer.
  std::shared_ptr<TaskQueue> mainQueue;
  /// Runs the processing passes, which come one after the other; may be concurrent.
  std::shared_ptr<TaskQueue> globalQueue;
  /// A new serial queue; the label names it for people who debug.
  std::function<std::shared_ptr<TaskQueue>(const std::string& label)> makeSerialQueue;

  std::shared_ptr<Clock> clock;                ///< for the time since a start
  std::shared_ptr<Log> log;                    ///< for diagnostics
  std::shared_ptr<Directories> directories;    ///< where the database is
  std::shared_ptr<UserDefaults> userDefaults;  ///< what survives a restart
  /// A new session for HTTP requests.
  std::function<std::shared_ptr<HttpSession>(const HttpSessionConfiguration&)> makeHttpSession;

  /// What the application shares with others that use sound; never null.
  std::shared_ptr<AudioSession> audioSession;
  /// A new unit that captures; null when it cannot be had, with the reason in
  /// `status`, or with `status` 0 when the system has no such unit. The function
  /// itself is empty when the library was built without sound.
  std::function<std::unique_ptr<AudioUnit>(AudioStatus& status)> makeInputUnit;
  /// A new converter from one format to the other; null with the reason in `status`.
  std::function<std::unique_ptr<AudioConverter>(const AudioStreamBasicDescription& inputFormat,
                                                const AudioStreamBasicDescription& outputFormat,
                                                AudioStatus& status)>
      makeAudioConverter;
};

/// The services of the system that the library was built for. `applicationName`
/// names the application's folders; empty means the name of the running program.
/// Starts no thread until a queue is first used. Each call makes new services.
LIRVOX_EXPORT Platform systemPlatform(const std::string& applicationName = {});

/// Makes `platform` the one that the library uses from now on. Callable from any
/// thread, but not while the library works: what runs already may keep the old one.
LIRVOX_EXPORT void install(Platform platform);

/// The installed platform, or `systemPlatform()` when none was. Takes a short
/// lock; not for real-time threads.
LIRVOX_EXPORT std::shared_ptr<const Platform> current();

/// Writes one line to the installed platform's log.
LIRVOX_EXPORT void log(std::string_view line);

}  // namespace lirvox::platform
