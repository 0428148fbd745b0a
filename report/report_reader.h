// The reading of a report: its lines one after the other, and whether they may come so.
#pragma once

#include <cstddef>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "report/report.h"

namespace report {

inline constexpr std::size_t kMaxLineLength = std::size_t{1} << 20;
inline constexpr std::size_t kMaxAttributes = 30;

// "line 12: what is wrong"
struct DamagedReport : std::runtime_error {
  DamagedReport(std::size_t line, const std::string& what)
      : std::runtime_error("line " + std::to_string(line) + ": " + what) {}
};

// Reads the report in `file` to its end in one pass, and tells the listener of each
// drive when it is complete and of each failed device. Keeps no more than one drive.
// Throws DamagedReport, after the listener was told of all that came before the damage,
// and std::system_error when `file` cannot be read; what the listener throws passes through.
void ReadReport(std::FILE* file, Listener& listener);

}  // namespace report
