// The texts of a property list's leaves. libplist takes whatever text it finds for
// some value: each function here accepts only what has one meaning, and returns it
// in a form that libplist reads with that meaning; nothing for any other text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace machines {

// An optional sign, then decimal figures or 0x and hexadecimal ones; -2^63 to 2^64-1.
std::optional<std::string> CanonicalInteger(std::string_view text);

// A decimal fraction or power, inf or nan; nothing beyond a 64-bit number's range.
std::optional<std::string> CanonicalReal(std::string_view text);

// YYYY-MM-DDTHH:MM:SSZ in the years 1933 to 2068, libplist's 32 bits of seconds.
std::optional<std::string> CanonicalDate(std::string_view text);

// Base64, padded, with white space anywhere; libplist needs none of that.
std::optional<std::string> CanonicalData(std::string_view text);

// <true> and <false> have no text.
std::optional<std::string> CanonicalBoolean(std::string_view text);

}  // namespace machines
