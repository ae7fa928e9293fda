// What there is to listen to.
#include "tools/Inputs.h"

#include <algorithm>

#include "lib/platform/PulseAudio.h"

namespace lirvox::tools {
namespace {

std::string whyNoSource(platform::AudioSession& session, const std::string& source) {
  const auto inputs = session.availableInputs();
  if (inputs.empty()) return "The sound server has no input: no microphone and no monitor";
  if (!source.empty()) {
    const bool isThere = std::any_of(inputs.begin(), inputs.end(), [&](const auto& input) {
      return input.uniqueIdentifier == source;
    });
    return isThere ? "" : "There is no source " + source + " (lirvox devices lists them)";
  }
  if (!session.currentRoute().inputs.empty()) return "";
  return "The sound server has no default source: choose one with --source (lirvox devices "
         "lists them)";
}

}  // namespace

platform::Platform platformWithSource(const std::string& source) {
  platform::Platform platform = *platform::current();
#if LIRVOX_WITH_PULSE
  platform::PulseAudioNames names;
  names.application = "lirvox";
  names.source = source;
  platform::usePulseAudio(platform, names);
#else
  (void)source;
#endif
  return platform;
}

std::string whyNoInput(const platform::Platform& platform, const std::string& source) {
  if (!platform.makeInputUnit) return "this build of lirvox cannot listen";
  platform::AudioSession& session = *platform.audioSession;
  LirvoxError error;
  if (!session.setActive(true, error)) return error.localizedDescription;
  const std::string reason = whyNoSource(session, source);
  // A server that died meanwhile has no sources either.
  if (!reason.empty() && !session.setActive(true, error)) return error.localizedDescription;
  return reason;
}

}  // namespace lirvox::tools
