// Sound files of any kind to samples of the capture format.
#include "tools/AudioDecoder.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include "tools/AvHandles.h"
#include "tools/MonoConverter.h"
#include "tools/StandardInput.h"

namespace lirvox::tools {
namespace {

using Kind = AudioError::Kind;

using av::Codec;
using av::Format;
using av::Frame;
using av::Packet;
using av::reasonOf;

// `input`, if there is one, is read instead of `path`.
Format openFormat(const std::string& path, AVIOContext* input) {
  AVFormatContext* raw = input ? avformat_alloc_context() : nullptr;
  if (raw) raw->pb = input;
  const std::string url = input ? std::string() : "file:" + path;
  const int opened = avformat_open_input(&raw, url.c_str(), nullptr, nullptr);
  // What is no sound file at all is told apart from one that cannot be read.
  if (opened == AVERROR_INVALIDDATA) throw AudioError(Kind::noAudio, "not a sound file");
  if (opened < 0) throw AudioError(Kind::unreadable, reasonOf(opened));
  Format format(raw);
  const int found = avformat_find_stream_info(format.get(), nullptr);
  if (found < 0) throw AudioError(Kind::unreadable, reasonOf(found));
  return format;
}

Codec openCodec(const AVFormatContext& format, int stream, const AVCodec* decoder) {
  Codec codec(avcodec_alloc_context3(decoder));
  int result = codec ? 0 : AVERROR(ENOMEM);
  if (result >= 0) {
    result = avcodec_parameters_to_context(codec.get(), format.streams[stream]->codecpar);
  }
  if (result >= 0) result = avcodec_open2(codec.get(), decoder, nullptr);
  if (result < 0) throw AudioError(Kind::unreadable, reasonOf(result));
  return codec;
}

// Takes the frames that the decoder has ready. False when the sink has had enough.
bool drain(AVCodecContext& codec, AVFrame& frame, MonoConverter& converter, bool& decoded) {
  while (avcodec_receive_frame(&codec, &frame) >= 0) {
    decoded = true;
    if (!converter.add(frame)) return false;
  }
  return true;
}

void decodeStream(AVFormatContext& format, int stream, AVCodecContext& codec,
                  const SampleSink& sink) {
  const Packet packet(av_packet_alloc());
  const Frame frame(av_frame_alloc());
  if (!packet || !frame) throw AudioError(Kind::unreadable, reasonOf(AVERROR(ENOMEM)));
  MonoConverter converter(sink);
  bool decoded = false;
  int read = 0;
  while ((read = av_read_frame(&format, packet.get())) >= 0) {
    // A damaged packet is lost, not the rest of the file.
    const bool sent =
        packet->stream_index == stream && avcodec_send_packet(&codec, packet.get()) >= 0;
    av_packet_unref(packet.get());
    if (sent && !drain(codec, *frame, converter, decoded)) return;
  }
  avcodec_send_packet(&codec, nullptr);
  if (drain(codec, *frame, converter, decoded) && converter.finish() && !decoded) {
    throw AudioError(Kind::unreadable,
                     read == AVERROR_EOF ? "no audio could be decoded" : reasonOf(read));
  }
}

std::string tag(const AVFormatContext& format, int stream, const char* name) {
  for (const AVDictionary* const tags : {format.metadata, format.streams[stream]->metadata}) {
    const AVDictionaryEntry* const entry = av_dict_get(tags, name, nullptr, 0);
    if (entry && *entry->value) return entry->value;
  }
  return {};
}

}  // namespace

AudioTags decodeAudio(const std::string& path, const SampleSink& sink) {
  av_log_set_level(AV_LOG_QUIET);
  const av::Stream input = path == "-" ? av::standardInput() : nullptr;
  if (path == "-" && !input) throw AudioError(Kind::unreadable, reasonOf(AVERROR(ENOMEM)));
  const Format format = openFormat(path, input.get());
  const AVCodec* decoder = nullptr;
  const int stream = av_find_best_stream(format.get(), AVMEDIA_TYPE_AUDIO, -1, -1, &decoder, 0);
  if (stream < 0) throw AudioError(Kind::noAudio, "no audio stream that can be decoded");
  const Codec codec = openCodec(*format, stream, decoder);
  // Video and other streams are not even read where the container allows.
  for (unsigned i = 0; i < format->nb_streams; ++i) {
    if (static_cast<int>(i) != stream) format->streams[i]->discard = AVDISCARD_ALL;
  }
  decodeStream(*format, stream, *codec, sink);
  return {tag(*format, stream, "title"), tag(*format, stream, "artist")};
}

AudioTags readRecording(const std::string& path, const SampleSink& sink) {
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  const std::unique_ptr<std::FILE, Close> file(std::fopen(path.c_str(), "rb"));
  if (!file) throw AudioError(Kind::unreadable, std::strerror(errno));
  std::array<std::int32_t, 4096> words{};
  std::size_t count = 0;
  while ((count = std::fread(words.data(), sizeof words[0], words.size(), file.get())) > 0) {
    if (!sink(words.data(), count)) return {};
  }
  if (std::ferror(file.get())) throw AudioError(Kind::unreadable, std::strerror(errno));
  return {};
}

AudioTags readAudio(const std::string& path, const SampleSink& sink) {
  constexpr std::string_view kRecording = ".dat";
  const bool isRecording =
      path.size() >= kRecording.size() &&
      path.compare(path.size() - kRecording.size(), kRecording.size(), kRecording) == 0;
  return isRecording ? readRecording(path, sink) : decodeAudio(path, sink);
}

}  // namespace lirvox::tools
