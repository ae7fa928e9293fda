// An audio unit whose sound is measured.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

#include "AudioUnit.h"
#include "Platform.h"

namespace lirvox::platform {

/// How much has been heard, and how loud it was. Any thread, real-time ones too.
struct SoundLevel {
  std::atomic<std::uint64_t> frames{0};  ///< that have arrived so far
  /// The largest magnitude since somebody last set it 0, in [0, 2^31].
  std::atomic<std::uint32_t> peak{0};
};

/// Hands everything on to another unit, and measures what it renders, which is 32-bit integers
/// until another format is set: of that, only the frames are counted. Threads: as for any unit.
class LIRVOX_EXPORT MeteredUnit : public AudioUnit {
 public:
  /// For short.
  using Format = AudioStreamBasicDescription;

  /// Makes the units of `platform`, as they are now, metered. Without units, there is
  /// nothing to meter.
  static std::shared_ptr<SoundLevel> meterInput(Platform& platform);

  /// `unit` is the one that does the work; `level` is written to.
  MeteredUnit(std::unique_ptr<AudioUnit> unit, std::shared_ptr<SoundLevel> level)
      : unit_(std::move(unit)), level_(std::move(level)) {}

  AudioStatus enableInput() override { return unit_->enableInput(); }
  AudioStatus inputStreamFormat(Format& format) override {
    return unit_->inputStreamFormat(format);
  }
  AudioStatus setClientStreamFormat(const Format& format) override {
    return unit_->setClientStreamFormat(format);
  }
  AudioStatus setDeliveredStreamFormat(const Format& format) override {
    measures_ = format.bitsPerChannel == 32 && (format.formatFlags & audioFormatFlagIsFloat) == 0;
    return unit_->setDeliveredStreamFormat(format);
  }
  AudioStatus maximumFramesPerSlice(std::uint32_t& frames) override {
    return unit_->maximumFramesPerSlice(frames);
  }
  AudioStatus setInputCallback(InputCallback callback) override {
    return unit_->setInputCallback(std::move(callback));
  }
  AudioStatus initialize() override { return unit_->initialize(); }
  AudioStatus uninitialize() override { return unit_->uninitialize(); }
  AudioStatus start() override { return unit_->start(); }
  AudioStatus stop() override { return unit_->stop(); }
  AudioStatus render(RenderActionFlags& actionFlags, const AudioTimeStamp& timeStamp,
                     std::uint32_t busNumber, std::uint32_t numberFrames,
                     AudioBufferList& list) override;

 private:
  const std::unique_ptr<AudioUnit> unit_;
  const std::shared_ptr<SoundLevel> level_;
  std::atomic<bool> measures_{true};
};

}  // namespace lirvox::platform
