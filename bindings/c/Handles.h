// What is behind the handles of the C interface.
#pragma once

#include <memory>

#include "bindings/c/Failure.h"
#include "bindings/c/lirvox_c.h"
#include "lib/Lirvox.h"
#include "lib/LirvoxDatabase.h"
#include "lib/platform/HostTaskQueues.h"
#include "lib/platform/MeteredUnit.h"
#include "lib/platform/Platform.h"
#include "lib/platform/SampleFeed.h"

struct lirvox_platform {
  lirvox::platform::Platform platform;
};

struct lirvox_task {
  lirvox::platform::Task task;
};

struct lirvox_pump {
  std::shared_ptr<lirvox::platform::PumpedTaskQueue> queue;
};

struct lirvox_feed {
  std::shared_ptr<lirvox::platform::SampleFeed> feed;
};

struct lirvox_meter {
  std::shared_ptr<lirvox::platform::SoundLevel> level;
};

struct lirvox_database {
  std::shared_ptr<lirvox::LirvoxDatabase> database;
};

struct lirvox_recognizer {
  std::shared_ptr<lirvox::Lirvox> recognizer;
};

namespace lirvox::c {

/// The host's context, which is released with the last owner.
using Context = std::shared_ptr<void>;

/// Releases the context if it fails, too.
inline Context makeContext(void* context, lirvox_release release) {
  return {context, [release](void* released) {
            if (release) release(released);
          }};
}

inline platform::Platform& platformOf(lirvox_platform* handle) {
  return required(handle, "platform")->platform;
}

inline Lirvox& recognizerOf(lirvox_recognizer* handle) {
  return *required(handle, "recognizer")->recognizer;
}

}  // namespace lirvox::c
