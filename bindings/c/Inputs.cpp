// What there is to listen to on the installed platform.
#include "bindings/c/Inputs.h"

#include <optional>

#include "bindings/c/Handles.h"

using namespace lirvox;
using namespace lirvox::c;

namespace {

// The session once it can be asked; throws when there is no sound.
std::shared_ptr<platform::AudioSession> activeSession() {
  const auto platform = platform::current();
  if (!platform->makeInputUnit) throw Failure(LIRVOX_NO_INPUT, "the platform has no sound");
  LirvoxError error;
  if (!platform->audioSession->setActive(true, error)) {
    throw Failure(LIRVOX_NO_INPUT, error.localizedDescription);
  }
  return platform->audioSession;
}

std::optional<platform::AudioSessionPort> portNamed(platform::AudioSession& session,
                                                    const char* identifier) {
  if (!identifier) return std::nullopt;
  for (auto& port : session.availableInputs()) {
    if (port.uniqueIdentifier == identifier) return std::move(port);
  }
  throw Failure(LIRVOX_NO_INPUT, std::string("there is no input ") + identifier);
}

}  // namespace

void lirvox::c::requireInput() {
  const auto session = activeSession();
  // A feed needs no device.
  if (dynamic_cast<platform::NullAudioSession*>(session.get())) return;
  if (session->currentRoute().inputs.empty()) {
    throw Failure(LIRVOX_NO_INPUT, "the sound server has no default input");
  }
}

lirvox_status lirvox_list_inputs(lirvox_input_visitor visitor, void* context) {
  return guarded([&] {
    required(visitor, "visitor");
    const auto session = activeSession();
    const auto route = session->currentRoute();
    for (const auto& port : session->availableInputs()) {
      const bool isCurrent =
          !route.inputs.empty() && route.inputs.front().uniqueIdentifier == port.uniqueIdentifier;
      const lirvox_input input = {port.uniqueIdentifier.c_str(), port.name.c_str(), port.isMonitor,
                                  isCurrent};
      visitor(context, &input);
    }
  });
}

lirvox_status lirvox_prefer_input(const char* identifier) {
  return guarded([&] {
    const auto session = activeSession();
    LirvoxError error;
    if (!session->setPreferredInput(portNamed(*session, identifier), error)) {
      throw Failure(LIRVOX_NO_INPUT, error.localizedDescription);
    }
  });
}
