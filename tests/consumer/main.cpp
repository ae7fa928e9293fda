// Uses the installed library from outside: headers, link, a call through each layer.
#include <cstdlib>

#include <lirvox/Lirvox.h>
#include <lirvox/LirvoxSettings.h>
#include <lirvox/platform/Platform.h>

int main() {
  auto platform = lirvox::platform::systemPlatform("consumer");
  platform.audioSession = std::make_shared<lirvox::platform::NullAudioSession>();
  lirvox::platform::install(std::move(platform));
  const auto recognizer = lirvox::Lirvox::sharedInstance();
  lirvox::LirvoxError error;
  const bool installed = recognizer->canRecognize(error);
  return !installed && error.code == 201 && recognizer->recordingTime() == 5.0 ? EXIT_SUCCESS
                                                                               : EXIT_FAILURE;
}
