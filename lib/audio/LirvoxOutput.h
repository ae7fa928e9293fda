// A sink that a microphone can play through to.
#pragma once

#include <cstdint>
#include <memory>

#include "../LirvoxExport.h"
#include "../platform/AudioTypes.h"

namespace lirvox {

class LirvoxOutput;

/// Gives an output what it plays.
class LIRVOX_EXPORT LirvoxOutputDataSource {
 public:
  virtual ~LirvoxOutputDataSource() = default;

  /// Fills `audioBufferList`, perhaps with pointers to samples of its own. Called
  /// on the thread that asks the output to fill; must not block.
  virtual platform::AudioStatus shouldFillAudioBufferList(
      LirvoxOutput& output, platform::AudioBufferList& audioBufferList, std::uint32_t frames,
      const platform::AudioTimeStamp& timestamp) = 0;
};

/// The end of a play-through: knows its format and where its samples come from.
/// It opens no device; a host that plays asks it with `fill`. Set up before use,
/// on one thread.
class LIRVOX_EXPORT LirvoxOutput {
 public:
  /// The format that it asks for.
  const platform::AudioStreamBasicDescription& inputFormat() const { return inputFormat_; }
  void setInputFormat(const platform::AudioStreamBasicDescription& format) {
    inputFormat_ = format;
  }

  /// What it plays; it is not kept alive.
  std::shared_ptr<LirvoxOutputDataSource> dataSource() const { return dataSource_.lock(); }
  void setDataSource(std::weak_ptr<LirvoxOutputDataSource> dataSource);

  /// Asks the data source for `frames` frames; without one, the list is left with
  /// sizes of 0. Allocates nothing.
  platform::AudioStatus fill(platform::AudioBufferList& audioBufferList, std::uint32_t frames,
                             const platform::AudioTimeStamp& timestamp);

 private:
  platform::AudioStreamBasicDescription inputFormat_;
  std::weak_ptr<LirvoxOutputDataSource> dataSource_;
};

}  // namespace lirvox
