#include "base/printable_text.h"

#include <utf8.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

namespace base {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Range {
  char32_t first;
  char32_t last;
};

// Control characters, line separators, and characters that change the direction of text: marks,
// embeddings, overrides and isolates.
constexpr std::array kUnfit{Range{0, 0x1F},        Range{0x7F, 0x9F},     Range{0x61C, 0x61C},
                            Range{0x200E, 0x200F}, Range{0x2028, 0x202E}, Range{0x2066, 0x2069}};

bool IsUnfit(char32_t character) {
  return std::any_of(kUnfit.begin(), kUnfit.end(), [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

// Most texts are, and need no look at their characters.
bool IsPrintableASCII(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c >= 0x20 && c <= 0x7E; });
}

}  // namespace

std::string ValidUTF8(std::string_view bytes) {
  if (IsPrintableASCII(bytes)) return std::string(bytes);
  std::string valid;
  utf8::replace_invalid(bytes.begin(), bytes.end(), std::back_inserter(valid), kReplacement);
  return valid;
}

std::string OneLine(std::string_view text) {
  if (IsPrintableASCII(text)) return std::string(text);
  const std::string valid = ValidUTF8(text);
  std::string line;
  for (auto next = valid.cbegin(); next != valid.cend();) {
    const char32_t character = utf8::unchecked::next(next);
    utf8::append(IsUnfit(character) ? kReplacement : character, line);
  }
  return line;
}

std::size_t Width(std::string_view text) {
  return static_cast<std::size_t>(utf8::unchecked::distance(text.begin(), text.end()));
}

std::string_view FirstCharacters(std::string_view text, std::size_t max) {
  const char* end = text.data();
  const char* const last = end + text.size();
  for (std::size_t i = 0; i < max && end != last; i++) utf8::unchecked::next(end);
  return text.substr(0, static_cast<std::size_t>(end - text.data()));
}

std::string Shortened(std::string_view text, std::size_t max) {
  if (FirstCharacters(text, max).size() == text.size()) return std::string(text);
  return std::string(FirstCharacters(text, max - 1)) + "\u2026";
}

std::string PrintableASCII(std::string_view text) {
  constexpr std::string_view kPadding(" \0", 2);
  std::string printable(Trimmed(text, kPadding));
  for (char& character : printable) {
    if (character < 0x20 || character > 0x7E) character = '?';
  }
  return printable;
}

}  // namespace base
