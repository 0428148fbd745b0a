// Text of a device, made fit for the platform's strings.
#pragma once

#include <string>
#include <string_view>

namespace machines {

// `text` without the padding around it (spaces, and the NULs that some drives pad
// with) and with a question mark for every byte that is not printable ASCII, of which
// alone names consist: with one wrong byte in it a name is still worth showing.
inline std::string PrintableText(std::string_view text) {
  constexpr std::string_view kPadding(" \0", 2);
  const std::size_t first = text.find_first_not_of(kPadding);
  if (first == std::string_view::npos) return "";
  std::string printable(text.substr(first, text.find_last_not_of(kPadding) + 1 - first));
  for (char& character : printable) {
    if (character < 0x20 || character > 0x7E) character = '?';
  }
  return printable;
}

}  // namespace machines
