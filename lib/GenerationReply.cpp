// The service's answer to the question for its current database.
#include "lib/GenerationReply.h"

#include <cstddef>

#include "lib/platform/JsonMembers.h"

namespace lirvox {
namespace {

constexpr std::size_t kLongestReply = std::size_t{64} << 10;

}  // namespace

std::optional<GenerationReply> GenerationReply::parse(const std::string& body) {
  if (body.size() > kLongestReply) return std::nullopt;
  // A top-level value that is no object has no keys.
  const auto members = platform::parseJsonMembers(body);
  if (!members || stringAt(*members, "Result") != "OK") return std::nullopt;
  const auto dt = stringAt(*members, "dt");
  if (!dt) return std::nullopt;
  return GenerationReply{*dt, stringAt(*members, "url")};
}

}  // namespace lirvox
