#include "base/dates.h"

#include <array>
#include <cstdio>

namespace base {

std::chrono::sys_seconds Now() {
  using namespace std::chrono;
  return floor<seconds>(system_clock::now());
}

std::string DayText(std::chrono::sys_seconds date) {
  const std::chrono::year_month_day day(std::chrono::floor<std::chrono::days>(date));
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(day.year()),
                static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
  return text.data();
}

std::string DateText(std::chrono::sys_seconds date) {
  const std::chrono::hh_mm_ss time(date - std::chrono::floor<std::chrono::days>(date));
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), " %02d:%02d UTC", static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()));
  return DayText(date) + text.data();
}

}  // namespace base
