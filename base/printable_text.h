// Makes text from strangers and devices fit to be used or shown. What the text means is not known
// here.
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

// `bytes` as UTF-8. U+FFFD replaces each sequence that is not UTF-8, so the result may have three
// times as many bytes.
std::string ValidUTF8(std::string_view bytes);

// `text` as UTF-8 for one line of a terminal. U+FFFD replaces each control character (also a tab),
// each line separator, each character that reorders the text around it, and each sequence that is
// not UTF-8. The text is not shortened.
std::string OneLine(std::string_view text);

// The first `max` characters of `text`, which is UTF-8, or all of it if it has fewer.
std::string_view FirstCharacters(std::string_view text, std::size_t max);

// The UTF-8 `text`. If it has more than `max` characters (1 or more), it is cut and ends in an
// ellipsis, `max` characters in all.
std::string Shortened(std::string_view text, std::size_t max);

// The number of characters in the UTF-8 `text`. A character that takes two columns on a terminal
// counts as one.
std::size_t Width(std::string_view text);

// `text` without the padding around it (spaces, and the NULs that some drives pad with) and with a
// question mark for every byte that is not printable ASCII, because a name with one wrong byte is
// still worth showing. Empty if there is only padding.
std::string PrintableASCII(std::string_view text);

}  // namespace base
