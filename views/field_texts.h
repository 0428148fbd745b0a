// The texts of single fields, as people see them in every form: each for one line, empty where the
// field is not known.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "drives/facts.h"
#include "health/health.h"

namespace views {

// `field` without the blanks that pad it.
std::string FieldText(std::string_view field);

// The device's path, or words for an empty one.
std::string PathText(std::string_view device);

std::string WorstText(const drives::Attribute& attribute);
std::string RawText(const drives::Attribute& attribute);
std::string TemperatureText(const drives::Drive& drive);  // "34 °C"
std::string ReadDateText(const drives::Drive& drive);     // "2026-11-25 16:02 UTC"

// "failing: 69 sectors reallocated": the word of the grade, and the reasons.
std::string HealthText(const health::Health& health);

// "MAXTOR STM3250820A, revision 3.AAE, 250.06 GB, serial 6RY0W4LH, 34 °C, read 2026-11-25 16:02
// UTC"
std::string DescriptionText(const drives::Drive& drive);

// "MAXTOR STM3250820A, serial 6RY0W4LH"
std::string NamesText(const drives::UnreadDrive& drive);
// The same after the device's path and a comma.
std::string UnreadText(const drives::UnreadDrive& drive);

// "line 12: what is wrong"
std::string DamageText(const drives::Damage& damage);

// "Not ATA, not looked at: nvme0n1" and the like: the disks that are not in the report. None where
// there are none, or nothing is known of any.
std::vector<std::string> OtherDisksTexts(const drives::Host& host);

}  // namespace views
