#include "base/byte_count.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace base {

std::string ByteCountText(double bytes) {
  constexpr double kStep = 1000;
  constexpr std::array kUnits = {"B", "KB", "MB", "GB", "TB", "PB", "EB"};
  std::size_t unit = 0;
  for (; bytes >= kStep && unit + 1 < kUnits.size(); unit++) bytes /= kStep;
  std::array<char, 64> text{};
  const int decimals = unit == 0 ? 0 : 2;
  std::snprintf(text.data(), text.size(), "%.*f %s", decimals, bytes, kUnits.at(unit));
  return text.data();
}

}  // namespace base
