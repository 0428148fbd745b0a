#include "machines/recorded/leaf_values.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <string_view>
#include <system_error>
#include <utility>

namespace machines {
namespace {

using platform::Property;

constexpr std::string_view kWhiteSpace = " \t\n";

std::string_view Trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
  return text.substr(0, text.find_last_not_of(kWhiteSpace) + 1);
}

bool TakePrefix(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

// The number that the whole of `text` is. `format` is from_chars' base or chars_format.
template <typename Value, typename Format>
std::optional<Value> Parsed(std::string_view text, Format format) {
  Value value{};
  const char* end = text.data() + text.size();
  const auto [parsed, error] = std::from_chars(text.data(), end, value, format);
  if (error != std::errc() || parsed != end) return std::nullopt;
  return value;
}

bool HasForm(std::string_view text, std::string_view form) {
  return std::ranges::equal(text, form, [](char c, char wanted) {
    return wanted == '0' ? c >= '0' && c <= '9' : c == wanted;
  });
}

constexpr auto kIsSpace = [](char c) { return c == ' ' || c == '\t' || c == '\n'; };

// The six bits that a digit of base64 stands for.
constexpr std::uint8_t kNoDigit = 64;

constexpr std::array<std::uint8_t, 256> kBase64 = [] {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::array<std::uint8_t, 256> bits{};
  bits.fill(kNoDigit);
  for (std::uint8_t i = 0; i < kDigits.size(); i++)
    bits[static_cast<unsigned char>(kDigits[i])] = i;
  return bits;
}();

// Appends the bytes of base64 whose length is a multiple of four. False: not all are digits.
bool AppendDecoded(std::string_view digits, platform::Data& bytes) {
  const auto bits = [&](std::size_t i) -> std::uint32_t {
    return kBase64[static_cast<unsigned char>(digits[i])];
  };
  const std::size_t before = bytes.size();
  bytes.resize(before + digits.size() / 4 * 3);
  std::uint8_t* next = bytes.data() + before;
  std::uint32_t seen = 0;
  for (std::size_t i = 0; i < digits.size(); i += 4) {
    const std::uint32_t a = bits(i), b = bits(i + 1), c = bits(i + 2), d = bits(i + 3);
    seen |= a | b | c | d;
    *next++ = static_cast<std::uint8_t>(a << 2 | b >> 4);
    *next++ = static_cast<std::uint8_t>(b << 4 | c >> 2);
    *next++ = static_cast<std::uint8_t>(c << 6 | d);
  }
  return seen < kNoDigit;
}

}  // namespace

std::optional<Property> TextValue(std::string& text) { return Property{text}; }

std::optional<Property> IntegerValue(std::string& text) {
  std::string_view figures = Trimmed(text);
  const bool isNegative = TakePrefix(figures, "-");
  if (!isNegative) TakePrefix(figures, "+");
  const bool isHexadecimal = TakePrefix(figures, "0x") || TakePrefix(figures, "0X");
  const auto magnitude = Parsed<std::uint64_t>(figures, isHexadecimal ? 16 : 10);
  if (!magnitude || (isNegative && *magnitude > std::uint64_t{1} << 63)) return std::nullopt;
  const std::uint64_t value = isNegative ? 0 - *magnitude : *magnitude;
  return Property{platform::IntegerNumber(static_cast<std::int64_t>(value))};
}

std::optional<Property> RealValue(std::string& text) {
  std::string_view figures = Trimmed(text);
  if (TakePrefix(figures, "+") && figures.starts_with('-')) return std::nullopt;
  const auto value = Parsed<double>(figures, std::chars_format::general);
  if (!value) return std::nullopt;
  return Property{platform::Float64Number(*value)};
}

std::optional<Property> DateValue(std::string& text) {
  using namespace std::chrono;
  const std::string_view date = Trimmed(text);
  if (!HasForm(date, "0000-00-00T00:00:00Z")) return std::nullopt;
  const auto figures = [date](std::size_t first, std::size_t count) {
    return *Parsed<int>(date.substr(first, count), 10);
  };
  const auto unsignedFigures = [&](std::size_t first) {
    return static_cast<unsigned>(figures(first, 2));
  };
  const year_month_day calendarDay(year(figures(0, 4)), month(unsignedFigures(5)),
                                   day(unsignedFigures(8)));
  const hours hour(figures(11, 2));
  const minutes minute(figures(14, 2));
  const seconds second(figures(17, 2));
  if (!calendarDay.ok() || hour >= days(1) || minute >= hours(1) || second >= minutes(1)) {
    return std::nullopt;
  }
  constexpr sys_days kEpoch = year(2001) / January / 1;
  const seconds since = sys_days(calendarDay) - kEpoch + hour + minute + second;
  return Property{platform::Date{since.count()}};
}

std::optional<Property> DataValue(std::string& text) {
  std::erase_if(text, kIsSpace);
  const std::size_t padding = text.size() - (text.find_last_not_of('=') + 1);
  if (padding > 2 || text.size() % 4 != 0) return std::nullopt;
  const std::string_view digits = std::string_view(text).substr(0, text.size() - padding);
  const std::size_t whole = digits.size() / 4 * 4;
  std::string last(digits.substr(whole));
  last.append(padding, 'A');  // stands for zero bits

  platform::Data bytes;
  bytes.reserve(text.size() / 4 * 3);
  if (!AppendDecoded(digits.substr(0, whole), bytes) || !AppendDecoded(last, bytes)) {
    return std::nullopt;
  }
  bytes.resize(bytes.size() - padding);
  return Property{std::move(bytes)};
}

std::optional<Property> TrueValue(std::string& text) {
  if (!text.empty()) return std::nullopt;
  return Property{true};
}

std::optional<Property> FalseValue(std::string& text) {
  if (!text.empty()) return std::nullopt;
  return Property{false};
}

}  // namespace machines
