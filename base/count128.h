// Counters of 128 bits, as NVMe drives have them. Not every compiler has a type for them.
#pragma once

#include <cstdint>
#include <string>

namespace base {

struct Count128 {
  std::uint64_t high = 0, low = 0;

  bool operator==(const Count128&) const = default;
};

// The count whose bits are those of the number.
constexpr Count128 Signed(std::int64_t number) {
  return {number < 0 ? ~std::uint64_t{0} : 0, static_cast<std::uint64_t>(number)};
}

// The number in decimal, as 1 to 39 digits.
std::string ToText(Count128 count);

// The number as a floating point one, which is not exact above 2^53.
double ToDouble(Count128 count);

// The number, or the largest of 64 bits where it is beyond that.
std::uint64_t Saturated(Count128 count);

}  // namespace base
