// Numbers from text.
#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace base {

// The number in `text`. nullopt if `text` as a whole is not a number, or a Number cannot hold it.
// `format` is a base, such as 10, or std::chars_format. The text has the form that std::from_chars
// takes, whatever the locale: no blanks, no plus sign, no 0x, and a minus sign only if Number is
// signed.
template <typename Number, typename Format>
std::optional<Number> ParseNumber(std::string_view text, Format format) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, format);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

}  // namespace base
