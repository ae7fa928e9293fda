// The process's recognizer, set up for a benchmark.
#pragma once

#include <memory>

#include "lib/Lirvox.h"
#include "lib/platform/MemoryAudioUnit.h"

namespace lirvox::bench {

/// The recognizer with the generated database installed; its microphone hears `samples`, as fast
/// as they are taken, or is silent without any. Once a process.
std::shared_ptr<Lirvox> installRecognizer(platform::MemoryAudioUnit::Samples samples);

}  // namespace lirvox::bench
