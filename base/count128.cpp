#include "base/count128.h"

#include <algorithm>
#include <array>
#include <limits>

namespace base {

// Divides by 10, from the highest 32 bits to the lowest, until nothing is left.
std::string ToText(Count128 count) {
  constexpr std::uint64_t kLow = 0xFFFFFFFF;
  std::array<std::uint64_t, 4> parts = {count.high >> 32, count.high & kLow, count.low >> 32,
                                        count.low & kLow};
  std::string text;
  do {
    std::uint64_t rest = 0;
    for (std::uint64_t& part : parts) {
      const std::uint64_t dividend = rest << 32 | part;
      part = dividend / 10;
      rest = dividend % 10;
    }
    text += static_cast<char>('0' + rest);
  } while (parts != std::array<std::uint64_t, 4>{});
  std::ranges::reverse(text);
  return text;
}

double ToDouble(Count128 count) {
  constexpr double kTwoTo64 = 18446744073709551616.0;
  return static_cast<double>(count.high) * kTwoTo64 + static_cast<double>(count.low);
}

std::uint64_t Saturated(Count128 count) {
  return count.high == 0 ? count.low : std::numeric_limits<std::uint64_t>::max();
}

}  // namespace base
