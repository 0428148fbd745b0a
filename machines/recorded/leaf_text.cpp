// The checks of numbers, dates and data.
#include "machines/recorded/leaf_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <system_error>

#include "machines/recorded/byte_set.h"

namespace machines {
namespace {

constexpr std::string_view kWhiteSpace = " \t\n";  // line ends are LF by now

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

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool HasForm(std::string_view text, std::string_view form) {
  return std::ranges::equal(
      text, form, [](char c, char wanted) { return wanted == '0' ? IsDigit(c) : c == wanted; });
}

constexpr ByteSet kSpace(kWhiteSpace);
constexpr ByteSet kBase64("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");

}  // namespace

std::optional<std::string> CanonicalInteger(std::string_view text) {
  text = Trimmed(text);
  const bool isNegative = TakePrefix(text, "-");
  if (!isNegative) TakePrefix(text, "+");
  const bool isHexadecimal = TakePrefix(text, "0x") || TakePrefix(text, "0X");
  const auto magnitude = Parsed<std::uint64_t>(text, isHexadecimal ? 16 : 10);
  if (!magnitude || (isNegative && *magnitude > std::uint64_t{1} << 63)) return std::nullopt;
  return (isNegative ? "-" : "") + std::to_string(*magnitude);
}

std::optional<std::string> CanonicalReal(std::string_view text) {
  text = Trimmed(text);
  if (TakePrefix(text, "+") && text.starts_with('-')) return std::nullopt;
  const auto value = Parsed<double>(text, std::chars_format::general);
  if (!value) return std::nullopt;
  std::array<char, 32> shortest;
  char* end = std::to_chars(shortest.data(), shortest.data() + shortest.size(), *value).ptr;
  return std::string(shortest.data(), end);
}

std::optional<std::string> CanonicalDate(std::string_view text) {
  text = Trimmed(text);
  if (!HasForm(text, "0000-00-00T00:00:00Z")) return std::nullopt;
  const auto figures = [text](std::size_t first, std::size_t count) {
    return *Parsed<unsigned>(text.substr(first, count), 10);
  };
  using namespace std::chrono;
  const year_month_day day(year(static_cast<int>(figures(0, 4))), month(figures(5, 2)),
                           std::chrono::day(figures(8, 2)));
  const bool isInRange = day.ok() && day.year() >= year(1933) && day.year() <= year(2068);
  const bool isTime = figures(11, 2) < 24 && figures(14, 2) < 60 && figures(17, 2) < 60;
  if (!isInRange || !isTime) return std::nullopt;
  return std::string(text);
}

std::optional<std::string> CanonicalData(std::string_view text) {
  std::string figures;
  figures.reserve(text.size());
  std::size_t padding = 0;
  for (std::string_view rest = text; !rest.empty();) {
    if (const std::size_t run = kBase64.LengthWithin(rest); run > 0) {
      if (padding > 0) return std::nullopt;
      figures += rest.substr(0, run);
      rest.remove_prefix(run);
      continue;
    }
    if (rest.front() == '=') {
      padding++;
    } else if (!kSpace.Contains(rest.front())) {
      return std::nullopt;
    }
    rest.remove_prefix(1);
  }
  figures.append(padding, '=');
  if (padding > 2 || figures.size() % 4 != 0) return std::nullopt;
  return figures;
}

std::optional<std::string> CanonicalBoolean(std::string_view text) {
  if (!text.empty()) return std::nullopt;
  return std::string();
}

}  // namespace machines
