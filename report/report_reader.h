// The reading of a report: its lines one after the other, and whether they may come so.
#pragma once

#include <cstddef>
#include <string_view>

#include "report/report.h"

namespace report {

// Many times what a host with as many drives as the probe has room for can give.
inline constexpr std::size_t kMaxReportSize = std::size_t{4} << 20;
// Of a drive: the probe prints a line for each row of a threshold block, which has so many.
inline constexpr std::size_t kMaxAttributes = 30;

// What `bytes` say up to the first damage, which is told in the result, or up to their end. A
// drive without its end line is left out, since that line has what the drive says of itself. No
// bytes are a whole report, of no drives. More than kMaxReportSize bytes are damage: give one byte
// more of a file that has them. `bytes` are not kept.
Report ParseReport(std::string_view bytes);

}  // namespace report
