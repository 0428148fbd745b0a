#include "base/dates.h"

#include <array>
#include <cstdio>

namespace base {

std::chrono::sys_seconds Now() {
  using namespace std::chrono;
  return floor<seconds>(system_clock::now());
}

std::string DateText(std::chrono::sys_seconds date) {
  const auto midnight = std::chrono::floor<std::chrono::days>(date);
  const std::chrono::year_month_day day(midnight);
  const std::chrono::hh_mm_ss time(date - midnight);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d UTC",
                static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                static_cast<unsigned>(day.day()), static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()));
  return text.data();
}

}  // namespace base
