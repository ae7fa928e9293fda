// The standard input stream as FFmpeg reads it.
#pragma once

#include "tools/AvHandles.h"

namespace lirvox::tools::av {

struct FreeStream {
  void operator()(AVIOContext* stream) const {
    av_freep(&stream->buffer);
    avio_context_free(&stream);
  }
};

using Stream = std::unique_ptr<AVIOContext, FreeStream>;

/// Ends with the stream, and when a signal is caught (`signalCaught`) while nothing comes.
/// Empty when memory is short.
Stream standardInput();

}  // namespace lirvox::tools::av
