// Sound through a PulseAudio server, or PipeWire's.
#pragma once

#include <string>

#include "../LirvoxExport.h"
#include "Platform.h"

namespace lirvox::platform {

/// What the server and its users are told about the application, and what it asks for.
struct PulseAudioNames {
  std::string application;             ///< as in a volume control
  std::string stream = "Recognition";  ///< what the application does
  /// Empty: the user's own server.
  std::string server;
  /// The source to capture from, and from no other, until the session is asked for
  /// another. Empty: the default source, which is followed when it changes.
  std::string source{};
};

/// Gives `platform` the server's sound: an audio session whose input ports are
/// the server's sources and whose data sources are their ports, and audio units
/// on them. Notifications arrive on the main queue of the platform that is
/// installed when the session first connects, which is not yet. Present only in a build with
/// LIRVOX_WITH_PULSE, where `systemPlatform` has called it already; a host calls it again to use
/// names of its own.
LIRVOX_EXPORT void usePulseAudio(Platform& platform, const PulseAudioNames& names);

}  // namespace lirvox::platform
