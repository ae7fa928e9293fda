// What a PulseAudio server says about its sources.
#include "lib/platform/linux/PulseSources.h"

#include "lib/platform/RunTask.h"

namespace lirvox::platform {
namespace {

std::string textOf(const char* text) {
  return text ? text : "";
}

AudioStreamBasicDescription formatOf(const pa_sample_spec& spec) {
  AudioStreamBasicDescription format;
  const auto bytes = static_cast<std::uint32_t>(pa_sample_size(&spec));
  const bool isFloat = spec.format == PA_SAMPLE_FLOAT32LE || spec.format == PA_SAMPLE_FLOAT32BE;
  format.sampleRate = spec.rate;
  format.formatID = audioFormatLinearPCM;
  format.formatFlags =
      audioFormatFlagIsPacked | (isFloat ? audioFormatFlagIsFloat : audioFormatFlagIsSignedInteger);
  format.bytesPerPacket = bytes * spec.channels;
  format.framesPerPacket = 1;
  format.bytesPerFrame = bytes * spec.channels;
  format.channelsPerFrame = spec.channels;
  format.bitsPerChannel = 8 * bytes;
  return format;
}

PulseSource sourceOf(const pa_source_info& info) {
  PulseSource source;
  source.port.uniqueIdentifier = textOf(info.name);
  source.port.name = textOf(info.description);
  source.port.isMonitor = info.monitor_of_sink != PA_INVALID_INDEX;
  for (std::uint32_t i = 0; i < info.n_ports; ++i) {
    source.port.dataSources.push_back(
        {textOf(info.ports[i]->name), textOf(info.ports[i]->description)});
  }
  if (info.active_port) source.activeDataSource = textOf(info.active_port->name);
  source.format = formatOf(info.sample_spec);
  return source;
}

// Without memory, a source is left out: libpulse must not be thrown through.
void addSource(pa_context*, const pa_source_info* info, int endOfList, void* target) {
  auto& sources = *static_cast<std::vector<PulseSource>*>(target);
  if (endOfList == 0) runLogged([&] { sources.push_back(sourceOf(*info)); });
}

}  // namespace

std::vector<PulseSource> pulseSources(PulseConnection& connection) {
  std::vector<PulseSource> sources;
  connection.ask([&](pa_context* context) {
    return pa_context_get_source_info_list(context, addSource, &sources);
  });
  return sources;
}

std::optional<PulseSource> pulseSource(PulseConnection& connection, const std::string& name) {
  std::vector<PulseSource> sources;
  connection.ask([&](pa_context* context) {
    return pa_context_get_source_info_by_name(context, name.c_str(), addSource, &sources);
  });
  if (sources.empty()) return std::nullopt;
  return sources.front();
}

bool setPulseDataSource(PulseConnection& connection, const std::string& source,
                        const std::string& dataSource) {
  bool accepted = false;
  const auto remember = [](pa_context*, int success, void* target) {
    *static_cast<bool*>(target) = success != 0;
  };
  connection.ask([&](pa_context* context) {
    return pa_context_set_source_port_by_name(context, source.c_str(), dataSource.c_str(), remember,
                                              &accepted);
  });
  return accepted;
}

}  // namespace lirvox::platform
