// The members of a JSON object, read and written without a tree of values.
#include "lib/platform/JsonMembers.h"

#include <array>
#include <charconv>
#include <utility>

#include <nlohmann/json.hpp>

namespace lirvox::platform {
namespace {

using Json = nlohmann::json;

// Hears what the parser comes across, and stops it by answering false.
class MemberReader final : public nlohmann::json_sax<Json> {
 public:
  JsonMembers takeMembers() { return std::move(members_); }

  bool null() override { return literal("null"); }
  bool boolean(bool value) override { return literal(value ? "true" : "false"); }
  bool number_integer(number_integer_t value) override { return literal(std::to_string(value)); }
  bool number_unsigned(number_unsigned_t value) override { return literal(std::to_string(value)); }
  // Not the text that was read: its point is that of the host's locale.
  bool number_float(number_float_t value, const string_t&) override {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return literal(std::string(text.data(), end));
  }
  bool string(string_t& value) override {
    return add({JsonMember::Kind::string, std::move(value)});
  }
  bool binary(binary_t&) override { return false; }

  bool start_object(std::size_t) override { return depth_ == 0 ? ++depth_ > 0 : openStructure(); }
  bool start_array(std::size_t) override { return openStructure(); }
  bool end_object() override { return --depth_ >= 0; }
  bool end_array() override { return --depth_ >= 0; }
  bool key(string_t& name) override {
    if (depth_ == 1) name_ = std::move(name);
    return true;
  }
  bool parse_error(std::size_t, const std::string&, const Json::exception&) override {
    return false;
  }

 private:
  bool literal(std::string text) { return add({JsonMember::Kind::literal, std::move(text)}); }
  bool openStructure() {
    if (!add({JsonMember::Kind::structure, {}})) return false;
    ++depth_;
    return true;
  }
  // False for what is no member of an object.
  bool add(JsonMember member) {
    if (depth_ == 1) members_[name_] = std::move(member);
    return depth_ > 0;
  }

  JsonMembers members_;
  std::string name_;
  int depth_ = 0;
};

std::string quoted(const std::string& text) {
  return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::optional<JsonMembers> parseJsonMembers(const std::string& text) {
  MemberReader reader;
  if (!Json::sax_parse(text, &reader)) return std::nullopt;
  return reader.takeMembers();
}

std::optional<std::string> stringAt(const JsonMembers& members, const std::string& name) {
  const auto member = members.find(name);
  if (member == members.end() || member->second.kind != JsonMember::Kind::string) {
    return std::nullopt;
  }
  return member->second.text;
}

std::string jsonText(const JsonMembers& members) {
  std::string text;
  for (const auto& [name, member] : members) {
    text += text.empty() ? "{\n  " : ",\n  ";
    text += quoted(name) + ": ";
    text += member.kind == JsonMember::Kind::string ? quoted(member.text) : member.text;
  }
  return (text.empty() ? "{" : text + '\n') + "}\n";
}

}  // namespace lirvox::platform
