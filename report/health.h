// What a report and the counts beside it say about the health of each drive, in one of six grades,
// and of all of them, in one verdict for monitoring; and the words for people to tell of it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "report/report.h"

namespace report {

// Each is worse than the one before it.
enum class Health {
  kGood,
  kNoAttributes,  // the drive reports no condition, and nothing else is known of it
  kHot,           // the life-span threshold of a temperature is reached, which may be long ago
  kWorn,          // another life-span threshold is reached
  kCaution,       // sectors are lost
  kFailing,       // a pre-failure threshold is reached, or the drive reports the condition
};

// As the report's status has it; value and threshold are not compared again. A threshold that the
// report calls invalid says nothing. The drive's is the worst of its attributes' and of what its
// sectors tell, kNoAttributes without any, and kFailing when it reports the condition itself.
Health HealthOf(const Attribute& attribute);
Health HealthOf(const Drive& drive);

// What every form for people calls it: one or two words, static.
std::string_view HealthWord(Health health);

// "failing: Reallocated Sector Count is 7, threshold 36: failure predicted; 69 sectors
// reallocated", for one line: the word for the drive's health, and all that is wrong with it.
std::string HealthText(const Drive& drive);
// The second half of it alone; empty where nothing is wrong.
std::string FaultsText(const Drive& drive);

// The attribute's name for one line, or "attribute 187" where the report has no name of it.
std::string NameText(const Attribute& attribute);

// The device's path for one line, or words for an empty one.
std::string PathText(std::string_view device);

// "line 12: what is wrong"
std::string DamageText(const Damage& damage);

// "Not ATA, not looked at: nvme0n1" and the like, each for one line: the disks that are not in the
// report. None where there are none, or nothing is known of any.
std::vector<std::string> OtherDisksTexts(const Report& report);

// The numbers are the statuses that monitoring plug-ins end with.
enum class Verdict { kOk = 0, kWarning = 1, kCritical = 2, kUnknown = 3 };

struct Judgement {
  Verdict verdict;
  // "smartprobe CRITICAL: failing: /dev/rdisk1; not read: /dev/rdisk4", for one line, with every
  // device that it tells of, however many
  std::string summary;
};

// `faults`, words for the summary, keep the verdict from being good; so does the report's damage,
// whether it is among them or not. The first of these that is so makes the verdict:
// - critical: a drive is failing;
// - unknown: there is a fault, a device that could not be read, or no drive. The drive that nothing
//   is known of may be failing, and a probe that finds nothing would else look well for ever;
// - warning: a drive is of any other grade but kGood.
// Disks that the probe does not look at are named, and change nothing.
Judgement Check(const Report& report, const std::vector<std::string>& faults);

}  // namespace report
