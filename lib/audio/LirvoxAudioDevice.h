// The input that a microphone uses.
#pragma once

#include <optional>

#include "../LirvoxExport.h"
#include "../platform/AudioSession.h"

namespace lirvox {

/// An input port of the audio session with, perhaps, one of its data sources. A
/// value; a device without a port stands for "no input".
class LIRVOX_EXPORT LirvoxAudioDevice {
 public:
  LirvoxAudioDevice() = default;
  /// A port, or none, with one of its data sources, or none.
  explicit LirvoxAudioDevice(
      std::optional<platform::AudioSessionPort> port,
      std::optional<platform::AudioSessionDataSource> dataSource = std::nullopt);

  /// The first input port of the installed audio session's current route, with
  /// the session's input data source. May block for a short time.
  static LirvoxAudioDevice currentInputDevice();

  /// What the device stands for.
  const std::optional<platform::AudioSessionPort>& port() const { return port_; }
  const std::optional<platform::AudioSessionDataSource>& dataSource() const { return dataSource_; }

  /// By the unique identifiers of port and data source; what is absent equals
  /// only what is absent.
  friend LIRVOX_EXPORT bool operator==(const LirvoxAudioDevice& a, const LirvoxAudioDevice& b);
  friend bool operator!=(const LirvoxAudioDevice& a, const LirvoxAudioDevice& b) {
    return !(a == b);
  }

 private:
  std::optional<platform::AudioSessionPort> port_;
  std::optional<platform::AudioSessionDataSource> dataSource_;
};

}  // namespace lirvox
