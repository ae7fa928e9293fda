// A sink that a microphone can play through to.
#include "lib/audio/LirvoxOutput.h"

#include <utility>

namespace lirvox {

void LirvoxOutput::setDataSource(std::weak_ptr<LirvoxOutputDataSource> dataSource) {
  dataSource_ = std::move(dataSource);
}

platform::AudioStatus LirvoxOutput::fill(platform::AudioBufferList& audioBufferList,
                                         std::uint32_t frames,
                                         const platform::AudioTimeStamp& timestamp) {
  if (const auto source = dataSource_.lock()) {
    return source->shouldFillAudioBufferList(*this, audioBufferList, frames, timestamp);
  }
  for (platform::AudioBuffer& buffer : audioBufferList.buffers) buffer.dataByteSize = 0;
  return platform::audioNoError;
}

}  // namespace lirvox
