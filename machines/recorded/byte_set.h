// A set of bytes, and the search of a text for them: the standard library's calls
// memchr for every byte of the text, which is most of the cost of scanning a file.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace machines {

class ByteSet {
 public:
  constexpr explicit ByteSet(std::string_view bytes) {
    for (const char byte : bytes) contains_[static_cast<unsigned char>(byte)] = true;
  }

  constexpr bool Contains(char byte) const { return contains_[static_cast<unsigned char>(byte)]; }

  // The number of bytes in front of the first that is in the set, or of all bytes.
  constexpr std::size_t LengthBefore(std::string_view text) const { return Run(text, false); }

  // The number of bytes in front of the first that is not in the set, or of all bytes.
  constexpr std::size_t LengthWithin(std::string_view text) const { return Run(text, true); }

 private:
  constexpr std::size_t Run(std::string_view text, bool contained) const {
    std::size_t length = 0;
    while (length < text.size() && Contains(text[length]) == contained) ++length;
    return length;
  }

  std::array<bool, 256> contains_{};
};

}  // namespace machines
