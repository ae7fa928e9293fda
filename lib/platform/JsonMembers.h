// The members of a JSON object, read and written without a tree of values: the library's tree
// needs memory to be destroyed, and ends the process when that is refused.
#pragma once

#include <map>
#include <optional>
#include <string>

namespace lirvox::platform {

struct JsonMember {
  /// An array or an object, whose content is not kept, is a structure; a literal is what
  /// remains: numbers, true, false, null.
  enum class Kind { string, literal, structure };
  Kind kind = Kind::string;
  /// The string, or the literal as JSON writes it.
  std::string text;
};

/// By name; of several with one name the last.
using JsonMembers = std::map<std::string, JsonMember>;

/// Nothing if `text` is no JSON object. Memory use does not depend on how deep it is nested.
std::optional<JsonMembers> parseJsonMembers(const std::string& text);

/// The string with that name; nothing if there is none.
std::optional<std::string> stringAt(const JsonMembers& members, const std::string& name);

/// The object, with a line for each member and no structures. Bytes that are no UTF-8 are
/// replaced.
std::string jsonText(const JsonMembers& members);

}  // namespace lirvox::platform
