// The main thread's sleep, which signals and other threads end.
#pragma once

#include <chrono>

namespace lirvox::tools {

/// From now on SIGINT, SIGTERM and SIGHUP only end the sleep, each once: the second of
/// a kind ends the process. A closed output is an error of the stream, no signal.
void catchSignals();

/// Whether one of them has come.
bool signalCaught();

/// Ends the sleep, or the next one. Callable from any thread.
void wake();

/// Sleeps until it is woken or the time is over.
void sleepFor(std::chrono::milliseconds time);

}  // namespace lirvox::tools
