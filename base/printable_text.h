// Text that a stranger or a device chose, made fit to be used or shown, whatever it means.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace base {

// `text` without the characters of `unwanted` at its start and end, borrowed from it.
inline std::string_view Trimmed(std::string_view text, std::string_view unwanted) {
  text.remove_prefix(std::min(text.find_first_not_of(unwanted), text.size()));
  return text.substr(0, text.find_last_not_of(unwanted) + 1);
}

// `bytes` as UTF-8, with U+FFFD for each sequence that is not: up to three times as many.
std::string ValidUTF8(std::string_view bytes);

// `text` as UTF-8 for one line of a terminal, with U+FFFD for each control character,
// line separator, character that reorders the text around it and sequence that is not UTF-8.
// A tab is a control character too. The text is not shortened.
std::string OneLine(std::string_view text);

// The first `max` characters of `text`, which is UTF-8, or all of it if it has fewer.
std::string_view FirstCharacters(std::string_view text, std::size_t max);

// `text`, which is UTF-8, or, if it has more than `max` characters (1 or more), its start and an
// ellipsis, `max` in all.
std::string Shortened(std::string_view text, std::size_t max);

// How many characters `text`, which is UTF-8, has: on a terminal, one of two columns counts as one.
std::size_t Width(std::string_view text);

// `text` without the padding around it (spaces, and the NULs that some drives pad
// with) and with a question mark for every byte that is not printable ASCII. With one
// wrong byte in it a name is still worth showing. Empty if there is only padding.
std::string PrintableASCII(std::string_view text);

}  // namespace base
