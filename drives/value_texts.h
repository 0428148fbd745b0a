// Values and thresholds: the numbers and the fixed texts that stand for some of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/numbers.h"

namespace drives {

// A value or a threshold.
struct ReportedValue {
  std::uint8_t number = 0;
  bool valid = true;  // false: the report calls the number invalid
};

// A decimal number of an unsigned type, as the report has it; nullopt if `text` is none, or has a
// leading zero.
template <typename Number>
std::optional<Number> ParseDecimal(std::string_view text) {
  if (text.size() > 1 && text.front() == '0') return std::nullopt;
  return base::ParseNumber<Number>(text, 10);
}

// nullopt if `text` is neither a number up to 255 nor a text that stands for one. "No Data" is
// 100 and valid: the probe prints that for a value of 100.
std::optional<ReportedValue> ParseValue(std::string_view text);
std::optional<ReportedValue> ParseThreshold(std::string_view text);

}  // namespace drives
