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

// What a byte of base64 stands for: six bits, or one of the others.
constexpr std::uint8_t kSpace = 64, kPadding = 65, kNoMeaning = 66;

constexpr std::array<std::uint8_t, 256> kBase64 = [] {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::array<std::uint8_t, 256> meanings{};
  meanings.fill(kNoMeaning);
  for (std::size_t i = 0; i < kDigits.size(); i++) {
    meanings[static_cast<unsigned char>(kDigits[i])] = static_cast<std::uint8_t>(i);
  }
  for (const char space : kWhiteSpace) meanings[static_cast<unsigned char>(space)] = kSpace;
  meanings['='] = kPadding;
  return meanings;
}();

std::uint32_t Meaning(char c) { return kBase64[static_cast<unsigned char>(c)]; }

// Most of a text is digits in groups of four, which need no look at each digit.
class Base64Decoder {
 public:
  explicit Base64Decoder(std::size_t length) : bytes_(length / 4 * 3), next_(bytes_.data()) {}

  // Takes the groups of four digits at the start of `text`, at the border of a group.
  void TakeGroups(std::string_view& text) {
    if (digits_ % 4 != 0 || padding_ > 0) return;
    std::size_t taken = 0;
    std::uint8_t* next = next_;
    for (; taken + 4 <= text.size(); taken += 4) {
      const std::uint32_t a = Meaning(text[taken]);
      const std::uint32_t b = Meaning(text[taken + 1]);
      const std::uint32_t c = Meaning(text[taken + 2]);
      const std::uint32_t d = Meaning(text[taken + 3]);
      if ((a | b | c | d) >= kSpace) break;
      next = Put(a << 18 | b << 12 | c << 6 | d, next);
    }
    next_ = next;
    text.remove_prefix(taken);
  }

  // Takes a character. False: it may not stand there.
  bool Take(char c) {
    const std::uint32_t meaning = Meaning(c);
    if (meaning == kSpace) return true;
    if (meaning == kNoMeaning || (padding_ > 0 && meaning != kPadding)) return false;
    if (meaning == kPadding) padding_++;
    group_ = group_ << 6 | (meaning == kPadding ? 0 : meaning);
    if (++digits_ % 4 == 0) next_ = Put(group_, next_);
    return true;
  }

  std::optional<platform::Data> Finish() {
    if (padding_ > 2 || digits_ % 4 != 0) return std::nullopt;
    bytes_.resize(static_cast<std::size_t>(next_ - bytes_.data()) - padding_);
    return std::move(bytes_);
  }

 private:
  static std::uint8_t* Put(std::uint32_t group, std::uint8_t* next) {
    next[0] = static_cast<std::uint8_t>(group >> 16);
    next[1] = static_cast<std::uint8_t>(group >> 8);
    next[2] = static_cast<std::uint8_t>(group);
    return next + 3;
  }

  platform::Data bytes_;
  std::uint8_t* next_;       // in bytes_
  std::uint32_t group_ = 0;  // of the digits that TakeGroups did not take
  std::size_t digits_ = 0;   // that it did not take, padding too
  std::size_t padding_ = 0;
};

}  // namespace

std::optional<Property> TextValue(const std::string& text) { return Property{text}; }

std::optional<Property> IntegerValue(const std::string& text) {
  std::string_view figures = Trimmed(text);
  const bool isNegative = TakePrefix(figures, "-");
  if (!isNegative) TakePrefix(figures, "+");
  const bool isHexadecimal = TakePrefix(figures, "0x") || TakePrefix(figures, "0X");
  const auto magnitude = Parsed<std::uint64_t>(figures, isHexadecimal ? 16 : 10);
  if (!magnitude || (isNegative && *magnitude > std::uint64_t{1} << 63)) return std::nullopt;
  const std::uint64_t value = isNegative ? 0 - *magnitude : *magnitude;
  return Property{platform::IntegerNumber(static_cast<std::int64_t>(value))};
}

std::optional<Property> RealValue(const std::string& text) {
  std::string_view figures = Trimmed(text);
  if (TakePrefix(figures, "+") && figures.starts_with('-')) return std::nullopt;
  const auto value = Parsed<double>(figures, std::chars_format::general);
  if (!value) return std::nullopt;
  return Property{platform::Float64Number(*value)};
}

std::optional<Property> DateValue(const std::string& text) {
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

std::optional<Property> DataValue(const std::string& text) {
  Base64Decoder decoder(text.size());
  for (std::string_view rest = text; !rest.empty(); rest.remove_prefix(1)) {
    decoder.TakeGroups(rest);
    if (rest.empty()) break;
    if (!decoder.Take(rest.front())) return std::nullopt;
  }
  std::optional<platform::Data> bytes = decoder.Finish();
  if (!bytes) return std::nullopt;
  return Property{std::move(*bytes)};
}

std::optional<Property> TrueValue(const std::string& text) {
  if (!text.empty()) return std::nullopt;
  return Property{true};
}

std::optional<Property> FalseValue(const std::string& text) {
  if (!text.empty()) return std::nullopt;
  return Property{false};
}

}  // namespace machines
