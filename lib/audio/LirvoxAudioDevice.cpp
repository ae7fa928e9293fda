// The input that a microphone uses.
#include "lib/audio/LirvoxAudioDevice.h"

#include <string>
#include <utility>

#include "lib/platform/Platform.h"

namespace lirvox {
namespace {

std::optional<std::string> portIdentifier(const LirvoxAudioDevice& device) {
  if (!device.port()) return std::nullopt;
  return device.port()->uniqueIdentifier;
}

std::optional<std::string> dataSourceIdentifier(const LirvoxAudioDevice& device) {
  if (!device.dataSource()) return std::nullopt;
  return device.dataSource()->identifier;
}

}  // namespace

LirvoxAudioDevice::LirvoxAudioDevice(std::optional<platform::AudioSessionPort> port,
                                     std::optional<platform::AudioSessionDataSource> dataSource)
    : port_(std::move(port)), dataSource_(std::move(dataSource)) {}

LirvoxAudioDevice LirvoxAudioDevice::currentInputDevice() {
  platform::AudioSessionInput input = platform::current()->audioSession->currentInput();
  return LirvoxAudioDevice(std::move(input.port), std::move(input.dataSource));
}

bool operator==(const LirvoxAudioDevice& a, const LirvoxAudioDevice& b) {
  return portIdentifier(a) == portIdentifier(b) &&
         dataSourceIdentifier(a) == dataSourceIdentifier(b);
}

}  // namespace lirvox
