// What the fuzzers share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

#include "lib/Landmark.h"
#include "lib/LirvoxRowMap.h"
#include "tests/support/TemporaryFolder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace lirvox::fuzz {

/// Separates the parts of an input that stands for several files.
constexpr std::string_view kPartSeparator = "\n--part--\n";

/// Installs a platform whose log goes nowhere. For an object that a fuzzer has once.
class QuietPlatform {
 public:
  QuietPlatform();

  /// A folder of the process.
  const test::TemporaryFolder folder;
};

/// Ends the process, so that the fuzzer keeps the input, unless `holds`.
void require(bool holds, const char* what);

/// Cuts the first part off `input`.
std::string_view takePart(std::string_view& input);

/// Replaces the content of the file at `path`, in place: no new file for each input.
void overwrite(const std::filesystem::path& path, std::string_view content);

/// Hits, order of tracks and vote for what a lookup gave. Checks what must hold of them.
void voteOn(const LirvoxRowMap& rows, const std::vector<QueryHash>& hashes, std::int32_t minimum);

}  // namespace lirvox::fuzz
