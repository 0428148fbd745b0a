// Numbers from their texts.
#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace base {

// The number that the whole of `text` is; nullopt if it is none, or one that a Number cannot
// hold. `format` is a base, such as 10, or std::chars_format. The text is as std::from_chars has
// it, whatever the locale: no blanks, no plus sign, no 0x; a minus sign only where Number has one.
template <typename Number, typename Format>
std::optional<Number> ParseNumber(std::string_view text, Format format) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, format);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

}  // namespace base
