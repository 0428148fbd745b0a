// Dates: the one of now, and how people read one.
#pragma once

#include <chrono>
#include <string>

namespace base {

// The system clock's date.
std::chrono::sys_seconds Now();

// "2026-11-25 16:02 UTC"
std::string DateText(std::chrono::sys_seconds date);

}  // namespace base
