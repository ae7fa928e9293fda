// An integer that behaves as its decimal text.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace lirvox {

/// The decimal text of a 32-bit signed integer ("%d"), held as the integer: four
/// bytes, no allocation. It compares as text does, so "12" comes before "9".
class DecimalString {
 public:
  constexpr DecimalString() = default;
  /// The text of `value`.
  constexpr explicit DecimalString(std::int32_t value) : value_(value) {}

  /// What the text says, as a number.
  constexpr std::int32_t intValue() const { return value_; }
  constexpr float floatValue() const { return static_cast<float>(value_); }

  /// The text itself.
  std::string string() const { return std::to_string(value_); }

  /// Equal texts are equal numbers.
  friend constexpr bool operator==(DecimalString a, DecimalString b) {
    return a.value_ == b.value_;
  }
  /// Whether the texts differ.
  friend constexpr bool operator!=(DecimalString a, DecimalString b) { return !(a == b); }

  /// Text order, character by character.
  friend bool operator<(DecimalString a, DecimalString b) {
    return Digits(a).view() < Digits(b).view();
  }

 private:
  class Digits {
   public:
    explicit Digits(DecimalString number)
        : end_(std::to_chars(text_, text_ + sizeof text_, number.value_).ptr) {}
    std::string_view view() const { return {text_, static_cast<std::size_t>(end_ - text_)}; }

   private:
    char text_[11];
    const char* end_;
  };

  std::int32_t value_ = 0;
};

}  // namespace lirvox
