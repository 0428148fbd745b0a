// The report's bytes as text, and text as people see it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "report/report.h"

namespace report {

// `bytes` as UTF-8: a byte 0xCA that begins no character is a no-break space, as the probe
// prints it in names of its own; what else is no text becomes U+FFFD, and everything else stays
// as it is.
std::string ToText(std::string_view bytes);

// In code points; `text` is UTF-8. Characters of two columns, or of none, count as one.
std::size_t Width(std::string_view text);

// What pads texts in a report. No other white space counts.
inline constexpr std::string_view kPadding = " ";

// `text`, or of one wider than `width`, which is not 0, the start and an ellipsis,
// `width` code points together.
std::string Shortened(const std::string& text, std::size_t width);

// A device's path for one line, or words for an empty one.
std::string PathText(std::string_view device);

// "line 12: what is wrong"
std::string DamageText(const Damage& damage);

}  // namespace report
