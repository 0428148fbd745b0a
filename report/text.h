// The report's bytes as text, and how wide text is.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace report {

// `bytes` as UTF-8 for one line: the byte 0xCA is a no-break space, and what is no text
// or could command a terminal becomes U+FFFD.
std::string ToText(std::string_view bytes);

// In code points.
std::size_t Width(const std::string& text);

// `text` without the blanks that pad it.
std::string_view Trim(std::string_view text);

}  // namespace report
