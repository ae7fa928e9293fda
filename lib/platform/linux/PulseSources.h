// What a PulseAudio server says about its sources.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "../AudioSession.h"
#include "../AudioTypes.h"
#include "PulseConnection.h"

namespace lirvox::platform {

/// A source, as a port of the audio session and more.
struct PulseSource {
  AudioSessionPort port;
  std::string activeDataSource;  ///< identifier, empty when it has none
  AudioStreamBasicDescription format;
};

/// The server's name for whichever source is its default.
constexpr const char* pulseDefaultSource = "@DEFAULT_SOURCE@";

/// Each asks the server and waits; without an answer, nothing.
std::vector<PulseSource> pulseSources(PulseConnection& connection);
std::optional<PulseSource> pulseSource(PulseConnection& connection, const std::string& name);

/// Makes `dataSource` the active port of the source; false when the server refuses.
bool setPulseDataSource(PulseConnection& connection, const std::string& source,
                        const std::string& dataSource);

}  // namespace lirvox::platform
