// Processes that a fork has made, in which the library's threads do not exist.
#pragma once

namespace lirvox::platform {

/// Whether this process was forked from one that had called `noteForks`. Costs nothing;
/// callable from any thread.
bool isForkedChild();

/// Begins to note forks. Once per process is enough.
void noteForks();

}  // namespace lirvox::platform
