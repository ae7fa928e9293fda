// What the fuzzers share.
#include "fuzz/Support.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

#include "lib/Decision.h"
#include "lib/platform/FileDescriptor.h"
#include "lib/platform/Platform.h"

namespace lirvox::fuzz {
namespace {

class NoLog : public platform::Log {
 public:
  void write(std::string_view) override {}
};

}  // namespace

QuietPlatform::QuietPlatform() {
  platform::Platform services = platform::systemPlatform("lirvox-fuzz");
  services.log = std::make_shared<NoLog>();
  platform::install(std::move(services));
}

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "Does not hold: %s\n", what);
  std::abort();
}

std::string_view takePart(std::string_view& input) {
  const std::size_t end = std::min(input.find(kPartSeparator), input.size());
  const std::string_view part = input.substr(0, end);
  input.remove_prefix(std::min(end + kPartSeparator.size(), input.size()));
  return part;
}

void overwrite(const std::filesystem::path& path, std::string_view content) {
  const platform::FileDescriptor file(
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  const ssize_t written = ::write(file.get(), content.data(), content.size());
  require(written == static_cast<ssize_t>(content.size()), "the fuzzer can write its files");
}

void voteOn(const LirvoxRowMap& rows, const std::vector<QueryHash>& hashes, std::int32_t minimum) {
  const Decision decision(&rows, hashes, minimum);
  const auto& result = decision.result;
  require(!result || result->result_count.intValue() > minimum, "a result exceeds the minimum");
  std::vector<std::size_t> order = decision.order.tracks;
  const std::size_t tracks = decision.hits.tracks().size();
  std::sort(order.begin(), order.end());
  for (std::size_t i = 0; i < tracks; ++i) {
    require(order.size() == tracks && order[i] == i, "every track has its turn");
  }
}

}  // namespace lirvox::fuzz
