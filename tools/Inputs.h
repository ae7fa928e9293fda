// What there is to listen to.
#pragma once

#include <string>

#include "lib/platform/Platform.h"

namespace lirvox::tools {

/// The system's sound, captured from `source` and no other; empty stands for the
/// default source, which is followed when it changes.
platform::Platform platformWithSource(const std::string& source);

/// Why `source` cannot be listened to, for people; empty when it can.
std::string whyNoInput(const platform::Platform& platform, const std::string& source);

}  // namespace lirvox::tools
