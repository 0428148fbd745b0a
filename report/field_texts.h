// The texts of single fields, as people see them in every form: each for one line, empty where the
// field is not known.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "report/report.h"

namespace report {

// `field` without the blanks that pad it.
std::string FieldText(std::string_view field);

std::string WorstText(const Attribute& attribute);
std::string RawText(const Attribute& attribute);
std::string TemperatureText(const Drive& drive);  // "34 °C"

// "2026-11-25 16:02 UTC"
std::string DateText(std::chrono::sys_seconds date);

// "MAXTOR STM3250820A, revision 3.AAE, 250.06 GB, serial 6RY0W4LH, 34 °C, read 2026-11-25 16:02
// UTC"
std::string DescriptionText(const Drive& drive);

// "MAXTOR STM3250820A, serial 6RY0W4LH"
std::string NamesText(const UnreadDrive& drive);
// The same after the device's path and a comma.
std::string UnreadText(const UnreadDrive& drive);

}  // namespace report
