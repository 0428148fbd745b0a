// What the report says about the health of each drive, in one of four grades, and of all of
// them, in one verdict for monitoring; and the words for people to tell of it.
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
  kWorn,          // a life-span threshold is reached
  kFailing,       // a pre-failure threshold is reached, or the drive reports the condition
};

// As the report's status has it; value and threshold are not compared again. The drive's is
// the worst of its attributes', kNoAttributes without any, and kFailing when it reports the
// condition itself.
Health HealthOf(const Attribute& attribute);
Health HealthOf(const Drive& drive);

// What every form for people calls it: one or two words, static.
std::string_view HealthWord(Health health);

// The device's path for one line, or words for an empty one.
std::string PathText(std::string_view device);

// "line 12: what is wrong"
std::string DamageText(const Damage& damage);

// The attribute whose value is the least above its threshold, or the most below it; the first of
// several. Only valid values and thresholds count, and no threshold that always passes or fails:
// it has to be from 1 to 253. Null if there is none. The drive owns it.
const Attribute* FindNearestToThreshold(const Drive& drive);

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
// - warning: a drive is worn, or has no attributes.
Judgement Check(const Report& report, const std::vector<std::string>& faults);

}  // namespace report
