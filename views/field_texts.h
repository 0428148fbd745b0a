// The texts of single fields, as people see them in every form: each for one line, empty where the
// field is not known.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "drives/facts.h"
#include "health/health.h"

namespace views {

// `field` without the blanks that pad it.
std::string FieldText(std::string_view field);

// The drive's path on its host, or else that of the report, or words for none.
std::string PathText(const drives::Drive& drive);
std::string PathText(const drives::UnreadDrive& drive);

std::string_view ProtocolText(const drives::Drive& drive);  // "ATA", "NVMe" or "SCSI"
std::string WorstText(const drives::Attribute& attribute);
std::string RawText(const drives::Attribute& attribute);
std::string TemperatureText(const drives::Drive& drive);  // "34 °C"
std::string TemperatureLimitText(const drives::Drive& drive);
std::string WrittenText(const drives::Drive& drive);      // "12.30 TB"
std::string UsedText(const drives::Drive& drive);         // "17 %"
std::string PowerOnText(const drives::Drive& drive);      // "13422 hours (1.5 years)"
std::string PowerCyclesText(const drives::Drive& drive);  // "903"
std::string RotationText(const drives::Drive& drive);     // "SSD" or "7200 rpm"
std::string ReadDateText(const drives::Drive& drive);     // "2026-11-25 16:02 UTC"

// "caution", "once" of a row that was at its threshold and makes no grade, or "OK"
std::string RowText(const health::Health& health, const drives::Attribute& attribute);

// "short", "completed without error", "123 h, 2 h ago", "4711": a self-test of the drive. The hours
// are those that the drive had been on.
struct SelfTestTexts {
  std::string type, status, hours, sector;
};
SelfTestTexts TextsOf(const drives::SelfTest& test, const drives::Drive& drive);

// " (+2 in 7 days)": how much the count in that row has grown; empty where it has not.
std::string GrowthText(const drives::Drive& drive, const drives::Attribute& attribute);
std::string GrowthText(const drives::Drive& drive, const drives::Figure& figure);

// "17 %", "35 °C", "1234 (631.81 MB)": the figure's value with its unit.
std::string FigureText(const drives::Figure& figure);
std::string RowText(const health::Health& health, const drives::Figure& figure);

// "failing: 69 sectors reallocated": the word of the grade, and the reasons.
std::string HealthText(const health::Health& health);

// "MAXTOR STM3250820A, revision 3.AAE, 250.06 GB, serial 6RY0W4LH, 7200 rpm, on for 13422 hours
// (1.5 years), 903 power cycles, 34 °C, read 2026-11-25 16:02 UTC"
std::string DescriptionText(const drives::Drive& drive);

// "MAXTOR STM3250820A, serial 6RY0W4LH"
std::string NamesText(const drives::UnreadDrive& drive);
// The same after the drive's path and a comma, and before why it could not be read.
std::string UnreadText(const drives::UnreadDrive& drive);

// "the newest answers are 30 days old" and the like; empty where they are no older than `maxAge`,
// or have no date.
std::string AgeFault(const drives::Host& host, std::chrono::days maxAge);
// The same as a sentence, for people, of answers that are no longer fresh.
std::string AgeText(const drives::Host& host);

// "gone since 2026-11-24: MAXTOR STM3250820A 6RY0W4LH (failing: why)", with the grade that it had
// if that was no good one, or why it was not read.
std::string GoneText(const drives::GoneDrive& gone);

// "host.example.org, 2026-11-25 16:02 UTC": of a recording, as far as it says so.
std::string OriginText(const drives::Host& host);

// "line 12: what is wrong"
std::string DamageText(const drives::Damage& damage);

// "Not asked: vda" and the like: the names of disks without facts. None where there are no such
// disks, or the host comes from a report, which does not mention them.
std::vector<std::string> OtherDisksTexts(const drives::Host& host);

}  // namespace views
