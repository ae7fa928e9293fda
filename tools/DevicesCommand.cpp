// lirvox devices: what there is to listen to.
#include <iostream>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "tools/CommandLine.h"
#include "tools/Console.h"
#include "tools/Inputs.h"

namespace lirvox::tools {
namespace {

using Json = nlohmann::ordered_json;

struct Device {
  platform::AudioSessionPort port;
  bool isDefault = false;
  std::string activePort;  // known of the default source alone
};

Json asJson(const Device& device) {
  Json ports = Json::array();
  for (const auto& port : device.port.dataSources) {
    ports.push_back({{"port", port.identifier},
                     {"name", port.name},
                     {"active", port.identifier == device.activePort}});
  }
  return {{"source", device.port.uniqueIdentifier},
          {"name", device.port.name},
          {"kind", device.port.isMonitor ? "monitor" : "microphone"},
          {"default", device.isDefault},
          {"ports", ports}};
}

void printText(const Device& device) {
  std::cout << (device.isDefault ? "* " : "  ") << device.port.uniqueIdentifier << "\n    "
            << device.port.name
            << (device.port.isMonitor ? " (monitor: what this output plays)" : " (microphone)")
            << '\n';
  for (const auto& port : device.port.dataSources) {
    std::cout << "      " << (port.identifier == device.activePort ? "* " : "  ") << port.identifier
              << ": " << port.name << '\n';
  }
}

int devices(const std::string& format) {
  const platform::Platform platform = platformWithSource("");
  platform::AudioSession& session = *platform.audioSession;
  LirvoxError error;
  if (!platform.makeInputUnit || !session.setActive(true, error)) {
    complain(whyNoInput(platform, ""));
    return exitAudioDevice;
  }
  const auto inputs = session.availableInputs();
  if (inputs.empty()) {
    complain(whyNoInput(platform, ""));
    return exitAudioDevice;
  }
  const auto route = session.currentRoute();
  const auto active = session.inputDataSource();
  for (const auto& input : inputs) {
    Device device{input, false, {}};
    device.isDefault =
        !route.inputs.empty() && route.inputs.front().uniqueIdentifier == input.uniqueIdentifier;
    if (device.isDefault && active) device.activePort = active->identifier;
    if (format == "json") {
      std::cout << asJson(device).dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
    } else {
      printText(device);
    }
  }
  std::cout << std::flush;
  return exitDone;
}

}  // namespace

Command devicesCommand() {
  const auto format = std::make_shared<std::string>();
  return {
      .name = "devices",
      .summary = "List what can be listened to",
      .details =
          "A star marks the default source and its port in use. A monitor hears what an output of\n"
          "this computer plays, a microphone the room.\n"
          "\n"
          "JSON: one object per line, with source (for listen --source), name, kind\n"
          "(microphone or monitor), default and ports.\n"
          "\n"
          "Example:\n"
          "  lirvox devices --format json",
      .options = {formatOption(*format)},
      .run = [format] { return devices(*format); }};
}

}  // namespace lirvox::tools
