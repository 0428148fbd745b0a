// The reading of a report: its lines one after the other, and whether they may come so.
#pragma once

#include <cstddef>
#include <string_view>

#include "report/report.h"

namespace report {

// Many times what a host with as many drives as the probe has room for can give.
inline constexpr std::size_t kMaxReportSize = std::size_t{4} << 20;
// Of a drive: the threshold block has room for so many, and the probe prints a line for each at
// most.
inline constexpr std::size_t kMaxAttributes = 30;

// What `bytes` say up to their end or to the first damage, which is told in the result.
// More than kMaxReportSize bytes are damage where that size is passed: to learn of it, one
// byte more is enough. A drive whose end line did not come is not in the result: without it
// nobody knows what the drive said of itself. No bytes are a whole report of nothing. `bytes`
// are not kept.
Report ParseReport(std::string_view bytes);

}  // namespace report
