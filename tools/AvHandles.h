// What FFmpeg allocates, owned.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
}

#include <array>
#include <memory>
#include <string>

namespace lirvox::tools::av {

template <auto Free>
struct FreeThrough {
  template <typename Object>
  void operator()(Object* object) const {
    Free(&object);
  }
};

using Format = std::unique_ptr<AVFormatContext, FreeThrough<avformat_close_input>>;
using Codec = std::unique_ptr<AVCodecContext, FreeThrough<avcodec_free_context>>;
using Packet = std::unique_ptr<AVPacket, FreeThrough<av_packet_free>>;
using Frame = std::unique_ptr<AVFrame, FreeThrough<av_frame_free>>;
using Mixer = std::unique_ptr<SwrContext, FreeThrough<swr_free>>;

/// What an error code means.
inline std::string reasonOf(int code) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(code, text.data(), text.size());
  return text.data();
}

}  // namespace lirvox::tools::av
