// Text without what stands around it.
#pragma once

#include <algorithm>
#include <string_view>

namespace base {

// `text` without the characters of `unwanted` at its start and end, borrowed from it.
inline std::string_view Trimmed(std::string_view text, std::string_view unwanted) {
  text.remove_prefix(std::min(text.find_first_not_of(unwanted), text.size()));
  return text.substr(0, text.find_last_not_of(unwanted) + 1);
}

}  // namespace base
