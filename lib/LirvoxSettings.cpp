// The recognizer's fixed numbers.
#include "lib/LirvoxSettings.h"

#include "lib/platform/Platform.h"

#ifndef LIRVOX_API_URL
#define LIRVOX_API_URL "http://localhost"
#endif

namespace lirvox {

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
  return LIRVOX_API_URL;
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
