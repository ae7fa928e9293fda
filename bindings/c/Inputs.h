// What there is to listen to on the installed platform.
#pragma once

namespace lirvox::c {

/// Throws `Failure` when a capture would find no input. Blocks while the sound server is
/// asked.
void requireInput();

}  // namespace lirvox::c
