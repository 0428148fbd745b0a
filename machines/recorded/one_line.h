// Text that a stranger chose, made fit for one line on a terminal. In a header of
// its own, since programs that read no recorded machine print such text too.
#pragma once

#include <utf8.h>

#include <iterator>
#include <string>
#include <string_view>

namespace machines {

// `text` with U+FFFD for each control character, line separator and invalid sequence.
inline std::string OneLine(std::string_view text) {
  constexpr char32_t kReplacement = 0xFFFD;
  std::string valid;
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(valid), kReplacement);
  std::string line;
  for (auto next = valid.cbegin(); next != valid.cend();) {
    const char32_t character = utf8::unchecked::next(next);
    const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0) ||
                           character == 0x2028 || character == 0x2029;
    utf8::append(isControl ? kReplacement : character, line);
  }
  return line;
}

}  // namespace machines
