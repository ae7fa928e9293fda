// The service's answer to the question for its current database.
#include "lib/GenerationReply.h"

#include <nlohmann/json.hpp>

namespace lirvox {
namespace {

constexpr std::size_t kLongestReply = std::size_t{64} << 10;

std::optional<std::string> stringAt(const nlohmann::json& object, const char* key) {
  const auto value = object.find(key);
  if (value == object.end() || !value->is_string()) return std::nullopt;
  return value->get<std::string>();
}

}  // namespace

std::optional<GenerationReply> GenerationReply::parse(const std::string& body) {
  if (body.size() > kLongestReply) return std::nullopt;
  constexpr bool kThrows = false;
  const auto json = nlohmann::json::parse(body, nullptr, kThrows);
  // A top-level value that is no object has no keys.
  if (!json.is_object() || stringAt(json, "Result") != "OK") return std::nullopt;
  const auto dt = stringAt(json, "dt");
  if (!dt) return std::nullopt;
  return GenerationReply{*dt, stringAt(json, "url")};
}

}  // namespace lirvox
