// Sound that has been through a lossy codec.
#include "tools/LossyCoding.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/mem.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>

#include "lib/LirvoxSettings.h"
#include "tools/AudioDecoder.h"
#include "tools/AvHandles.h"

namespace lirvox::tools {
namespace {

constexpr double kPeak = 0.5;

int checked(int result) {
  if (result < 0 && result != AVERROR(EAGAIN) && result != AVERROR_EOF) {
    throw AudioError(AudioError::Kind::unreadable, "AAC: " + av::reasonOf(result));
  }
  return result;
}

template <class Made>
Made made(Made object) {
  if (!object) checked(AVERROR(ENOMEM));
  return object;
}

av::Codec contextFor(const AVCodec* codec) {
  if (!codec) checked(AVERROR_ENCODER_NOT_FOUND);
  av::Codec context = made(av::Codec(avcodec_alloc_context3(codec)));
  context->sample_rate = LirvoxSettings::settingSampleRate();
  context->ch_layout = AV_CHANNEL_LAYOUT_MONO;
  context->thread_count = 1;
  return context;
}

// Coder and decoder, one behind the other.
class Chain {
 public:
  explicit Chain(int bitsPerSecond)
      : coder_(contextFor(avcodec_find_encoder(AV_CODEC_ID_AAC))),
        decoder_(contextFor(avcodec_find_decoder(AV_CODEC_ID_AAC))),
        packet_(made(av::Packet(av_packet_alloc()))),
        frame_(made(av::Frame(av_frame_alloc()))) {
    coder_->sample_fmt = AV_SAMPLE_FMT_FLTP;
    coder_->bit_rate = bitsPerSecond;
    coder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    checked(avcodec_open2(coder_.get(), nullptr, nullptr));
    const auto size = static_cast<std::size_t>(coder_->extradata_size);
    void* const header = av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE);
    decoder_->extradata = static_cast<std::uint8_t*>(made(header));
    std::memcpy(header, coder_->extradata, size);
    decoder_->extradata_size = coder_->extradata_size;
    checked(avcodec_open2(decoder_.get(), nullptr, nullptr));
  }

  std::size_t frameSize() const { return static_cast<std::size_t>(coder_->frame_size); }
  // Samples that come before the first one.
  std::size_t delay() const { return static_cast<std::size_t>(coder_->initial_padding); }

  // `count` samples, at most a frame of them; the rest of it is silent.
  void add(const double* samples, std::size_t count, double gain) {
    const av::Frame frame = made(av::Frame(av_frame_alloc()));
    frame->nb_samples = coder_->frame_size;
    frame->format = coder_->sample_fmt;
    frame->ch_layout = coder_->ch_layout;
    frame->sample_rate = coder_->sample_rate;
    checked(av_frame_get_buffer(frame.get(), 0));
    auto* const out = reinterpret_cast<float*>(frame->data[0]);
    std::fill(out, out + frameSize(), 0.0F);
    std::transform(samples, samples + count, out,
                   [gain](double sample) { return static_cast<float>(sample * gain); });
    send(frame.get());
  }

  // All that has gone through.
  Sound finish() {
    send(nullptr);
    return std::move(decoded_);
  }

 private:
  // Null: there is no more.
  void send(const AVFrame* frame) {
    checked(avcodec_send_frame(coder_.get(), frame));
    while (checked(avcodec_receive_packet(coder_.get(), packet_.get())) >= 0) {
      checked(avcodec_send_packet(decoder_.get(), packet_.get()));
      av_packet_unref(packet_.get());
      drain();
    }
    if (frame) return;
    checked(avcodec_send_packet(decoder_.get(), nullptr));
    drain();
  }

  void drain() {
    while (checked(avcodec_receive_frame(decoder_.get(), frame_.get())) >= 0) {
      const auto* const samples = reinterpret_cast<const float*>(frame_->data[0]);
      decoded_.insert(decoded_.end(), samples, samples + frame_->nb_samples);
    }
  }

  const av::Codec coder_;
  const av::Codec decoder_;
  const av::Packet packet_;
  const av::Frame frame_;
  Sound decoded_;
};

}  // namespace

Sound codedAndDecoded(const Sound& sound, int bitsPerSecond) {
  double peak = 0.0;
  for (const double sample : sound) peak = std::max(peak, std::abs(sample));
  if (peak == 0.0) return sound;
  const double gain = kPeak / peak;
  Chain chain(bitsPerSecond);
  for (std::size_t at = 0; at < sound.size(); at += chain.frameSize()) {
    chain.add(sound.data() + at, std::min(chain.frameSize(), sound.size() - at), gain);
  }
  Sound decoded = chain.finish();
  const std::size_t delay = std::min(chain.delay(), decoded.size());
  decoded.erase(decoded.begin(), decoded.begin() + static_cast<std::ptrdiff_t>(delay));
  decoded.resize(sound.size());
  for (double& sample : decoded) sample /= gain;
  return decoded;
}

}  // namespace lirvox::tools
