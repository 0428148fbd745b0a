// Reads a report: takes the facts out of its lines, and finds where it is damaged.
#pragma once

#include <cstddef>
#include <string_view>

#include "drives/facts.h"

namespace drives {

// Many times what a host with as many drives as the probe has room for can give.
inline constexpr std::size_t kMaxReportSize = std::size_t{4} << 20;
// The most lines of a drive: the probe prints one for each of the 30 rows of a threshold block.
inline constexpr std::size_t kMaxAttributes = 30;

// What `bytes` say, up to their end or to the first damage, which the result then describes. A
// drive without its end line is left out, since that line holds the drive's own verdict. No bytes
// are a whole report, of no drives. More than kMaxReportSize bytes are damage: of a larger file,
// give one byte more than that. `bytes` are not kept.
Host ParseReport(std::string_view bytes);

}  // namespace drives
