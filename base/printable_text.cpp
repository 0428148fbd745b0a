#include "base/printable_text.h"

#include <utf8.h>

#include <iterator>

namespace base {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool BreaksLine(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 ||
         character == 0x2029;
}

}  // namespace

std::string OneLine(std::string_view text) {
  std::string valid;
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(valid), kReplacement);
  std::string line;
  for (auto next = valid.cbegin(); next != valid.cend();) {
    const char32_t character = utf8::unchecked::next(next);
    utf8::append(BreaksLine(character) ? kReplacement : character, line);
  }
  return line;
}

std::string PrintableASCII(std::string_view text) {
  constexpr std::string_view kPadding(" \0", 2);
  const std::size_t first = text.find_first_not_of(kPadding);
  if (first == std::string_view::npos) return "";
  std::string printable(text.substr(first, text.find_last_not_of(kPadding) + 1 - first));
  for (char& character : printable) {
    if (character < 0x20 || character > 0x7E) character = '?';
  }
  return printable;
}

}  // namespace base
