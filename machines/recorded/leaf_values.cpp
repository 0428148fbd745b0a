#include "machines/recorded/leaf_values.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <string_view>
#include <utility>

#include "base/numbers.h"
#include "base/printable_text.h"

namespace machines {
namespace {

using base::ParseNumber;
using base::Trimmed;
using platform::Property;

constexpr std::string_view kWhiteSpace = " \t\n";

bool RemovePrefix(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

bool HasForm(std::string_view text, std::string_view form) {
  return std::ranges::equal(text, form, [](char c, char wanted) {
    return wanted == '0' ? c >= '0' && c <= '9' : c == wanted;
  });
}

// The six bits that a character of base64 stands for.
constexpr std::uint8_t kNoDigit = 64;
constexpr std::array<std::uint8_t, 256> kBase64 = [] {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::array<std::uint8_t, 256> bits{};
  bits.fill(kNoDigit);
  std::uint8_t value = 0;
  for (const char digit : kDigits) bits[static_cast<unsigned char>(digit)] = value++;
  return bits;
}();

std::uint32_t Bits(char c) { return kBase64[static_cast<unsigned char>(c)]; }

std::optional<Property> ParseData(std::string text) {
  std::erase_if(text, [](char c) { return c == ' ' || c == '\t' || c == '\n'; });
  if (text.size() % 4 != 0) return std::nullopt;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  std::fill_n(text.rbegin(), padding, 'A');
  platform::Data bytes(text.size() / 4 * 3);
  std::uint8_t* next = bytes.data();
  for (const char* group = text.data(); group != text.data() + text.size(); group += 4) {
    const std::uint32_t a = Bits(group[0]);
    const std::uint32_t b = Bits(group[1]);
    const std::uint32_t c = Bits(group[2]);
    const std::uint32_t d = Bits(group[3]);
    if ((a | b | c | d) >= kNoDigit) return std::nullopt;
    *next++ = static_cast<std::uint8_t>(a << 2 | b >> 4);
    *next++ = static_cast<std::uint8_t>(b << 4 | c >> 2);
    *next++ = static_cast<std::uint8_t>(c << 6 | d);
  }
  bytes.resize(bytes.size() - padding);
  return Property{std::move(bytes)};
}

std::optional<Property> ParseInteger(std::string_view text) {
  std::string_view digits = Trimmed(text, kWhiteSpace);
  const bool isNegative = RemovePrefix(digits, "-");
  if (!isNegative) RemovePrefix(digits, "+");
  const bool isHexadecimal = RemovePrefix(digits, "0x") || RemovePrefix(digits, "0X");
  const auto magnitude = ParseNumber<std::uint64_t>(digits, isHexadecimal ? 16 : 10);
  if (!magnitude || (isNegative && *magnitude > std::uint64_t{1} << 63)) return std::nullopt;
  const std::uint64_t value = isNegative ? 0 - *magnitude : *magnitude;
  return Property{platform::IntegerNumber(static_cast<std::int64_t>(value))};
}

std::optional<Property> ParseReal(std::string_view text) {
  std::string_view digits = Trimmed(text, kWhiteSpace);
  if (RemovePrefix(digits, "+") && digits.starts_with('-')) return std::nullopt;
  const auto value = ParseNumber<double>(digits, std::chars_format::general);
  if (!value) return std::nullopt;
  return Property{platform::Float64Number(*value)};
}

std::optional<Property> ParseDate(std::string_view text) {
  using namespace std::chrono;
  const std::string_view date = Trimmed(text, kWhiteSpace);
  if (!HasForm(date, "0000-00-00T00:00:00Z")) return std::nullopt;
  const auto digits = [date](std::size_t first, std::size_t count = 2) {
    return *ParseNumber<int>(date.substr(first, count), 10);
  };
  const year_month_day day = year(digits(0, 4)) / digits(5) / digits(8);
  const hours hour(digits(11));
  const minutes minute(digits(14));
  const seconds second(digits(17));
  const bool isTime = hour < days(1) && minute < hours(1) && second < minutes(1);
  if (!day.ok() || !isTime) return std::nullopt;
  return Property{sys_days(day) + hour + minute + second};
}

}  // namespace

std::optional<Property> ParseLeaf(std::string_view name, const std::string& text) {
  if (name == "string") return Property{text};
  if (name == "integer") return ParseInteger(text);
  if (name == "data") return ParseData(text);
  if (name == "real") return ParseReal(text);
  if (name == "date") return ParseDate(text);
  if (name == "true" && text.empty()) return Property{true};
  if (name == "false" && text.empty()) return Property{false};
  return std::nullopt;
}

}  // namespace machines
