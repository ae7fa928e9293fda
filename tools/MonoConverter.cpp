// Decoded frames to samples of the capture format.
#include "tools/MonoConverter.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cmath>
#include <string>

#include "lib/LirvoxSettings.h"

namespace lirvox::tools {
namespace {

// Sample rates in Hz that are any sound's.
constexpr int kLowestRate = 1000;
constexpr int kHighestRate = 768000;

// Frames that leave the resampler at a time.
constexpr std::uint32_t kTakenAtOnce = 4096;

// What the mixer gave out or was asked for, unless that is an error.
int checked(int result) {
  if (result < 0) throw AudioError(AudioError::Kind::unreadable, av::reasonOf(result));
  return result;
}

// Full scale is [-1, 1). What lies below a word's last bit is cut off, and what is no number
// is silence.
std::int32_t wordOf(double value) {
  if (std::isnan(value)) return 0;
  constexpr double kScale = 2147483648.0;
  return static_cast<std::int32_t>(std::clamp(value * kScale, -kScale, kScale - 1));
}

}  // namespace

bool MonoConverter::add(const AVFrame& frame) {
  bool wanted = true;
  if (!resampler_ || !matches(frame)) {
    wanted = finish();
    configure(frame);
  }
  mix(frame);
  return wanted && resample();
}

bool MonoConverter::finish() {
  if (!resampler_) return true;
  resampler_->end();
  return giveOut();
}

bool MonoConverter::matches(const AVFrame& frame) const {
  return frame.sample_rate == rate_ && frame.format == format_ &&
         av_channel_layout_compare(&frame.ch_layout, &layout_) == 0;
}

void MonoConverter::configure(const AVFrame& frame) {
  rate_ = frame.sample_rate;
  if (rate_ < kLowestRate || rate_ > kHighestRate) {
    throw AudioError(AudioError::Kind::unreadable,
                     "its sample rate is " + std::to_string(rate_) + " Hz");
  }
  format_ = static_cast<AVSampleFormat>(frame.format);
  layout_ = frame.ch_layout;
  AVChannelLayout in = frame.ch_layout;
  // Raw formats name a number of channels without saying which.
  if (in.order == AV_CHANNEL_ORDER_UNSPEC) av_channel_layout_default(&in, in.nb_channels);
  AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
  SwrContext* raw = nullptr;
  const int result =
      swr_alloc_set_opts2(&raw, &mono, AV_SAMPLE_FMT_DBL, rate_, &in, format_, rate_, 0, nullptr);
  mixer_.reset(raw);
  checked(result);
  // Else words of 32 bits would lose some on the way.
  if (av_get_bytes_per_sample(format_) > 2 &&
      av_get_packed_sample_fmt(format_) != AV_SAMPLE_FMT_FLT) {
    checked(av_opt_set_sample_fmt(raw, "internal_sample_fmt", AV_SAMPLE_FMT_DBLP, 0));
  }
  checked(swr_init(raw));
  const auto outputHz = static_cast<std::uint32_t>(LirvoxSettings::settingSampleRate());
  resampler_ =
      std::make_unique<platform::Resampler>(static_cast<std::uint32_t>(rate_), outputHz, 1);
  resampled_.resize(kTakenAtOnce);
}

void MonoConverter::mix(const AVFrame& frame) {
  const int room = checked(swr_get_out_samples(mixer_.get(), frame.nb_samples));
  mono_.resize(static_cast<std::size_t>(room));
  auto* output = reinterpret_cast<std::uint8_t*>(mono_.data());
  // FFmpeg's own declaration lacks a const.
  auto** const input = const_cast<const std::uint8_t**>(frame.extended_data);
  const int made = checked(swr_convert(mixer_.get(), &output, room, input, frame.nb_samples));
  mono_.resize(static_cast<std::size_t>(made));
}

bool MonoConverter::resample() {
  for (std::size_t done = 0; done < mono_.size();) {
    std::uint32_t room = 0;
    double* const space = resampler_->space(room);
    const auto count = static_cast<std::uint32_t>(std::min<std::size_t>(room, mono_.size() - done));
    std::copy_n(&mono_[done], count, space);
    resampler_->put(count);
    done += count;
    if (!giveOut()) return false;
  }
  return true;
}

bool MonoConverter::giveOut() {
  while (const std::uint32_t count = resampler_->take(resampled_.data(), kTakenAtOnce)) {
    words_.resize(count);
    std::transform(resampled_.begin(), resampled_.begin() + count, words_.begin(), wordOf);
    if (!sink_(words_.data(), count)) return false;
  }
  return true;
}

}  // namespace lirvox::tools
