// The current date, and dates as text for people.
#pragma once

#include <chrono>
#include <string>

namespace base {

// The system clock's date, in whole seconds.
std::chrono::sys_seconds Now();

// The date as "2026-11-25", in UTC.
std::string DayText(std::chrono::sys_seconds date);

// The date as "2026-11-25 16:02 UTC".
std::string DateText(std::chrono::sys_seconds date);

}  // namespace base
