// The recognizer's fixed numbers.
#include "lib/LirvoxSettings.h"

#include <cstdlib>

#include "lib/platform/Platform.h"

namespace lirvox {
namespace {

// A setting of the build that the environment may replace, for tests and staging.
std::string deploymentSetting(const char* name, const char* value) {
  const char* const replacement = std::getenv(name);
  return replacement && *replacement ? replacement : value;
}

}  // namespace

std::int32_t LirvoxSettings::settingNFFT() {
  return 512;
}
std::int32_t LirvoxSettings::settingChunkSize() {
  return 512;
}
std::int32_t LirvoxSettings::settingNHop() {
  return 256;
}
std::int32_t LirvoxSettings::settingSHIFTS() {
  return 4;
}
std::int32_t LirvoxSettings::settingNumFreqs() {
  return settingNFFT() / 2 + 1;
}
std::int32_t LirvoxSettings::settingSampleRate() {
  return 11025;
}
double LirvoxSettings::recordTime() {
  return 5.0;
}
std::int32_t LirvoxSettings::minimumBufferSizeForMiniSpectogram() {
  return 2560;
}
std::string LirvoxSettings::apiUrl() {
  return deploymentSetting("LIRVOX_API_URL", LIRVOX_API_URL);
}

std::string LirvoxSettings::serviceHostFolder() {
  return deploymentSetting("LIRVOX_SERVICE_HOST_FOLDER", LIRVOX_SERVICE_HOST_FOLDER);
}

std::string LirvoxSettings::databasePath() {
  return platform::current()->directories->cachesDirectory() + "/lirvox/db1.sqlite";
}

std::int32_t LirvoxSettings::sampleRate() {
  return 11025;
}
std::int32_t LirvoxSettings::minimumFindedCntDefault() {
  return 30;
}
bool LirvoxSettings::traceExecutionQuery() {
  return false;
}

}  // namespace lirvox
