// What the report says about the health of each drive, in one of four grades, and of all of
// them, in one verdict for monitoring.
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

// The attribute whose value is the least above its threshold, or the most below it; the first
// of several. Only valid figures count, and only a threshold that can be reached and passed:
// 1 to 253. Null: there is none. The drive owns it.
const Attribute* FindNearestToThreshold(const Drive& drive);

// The numbers are the statuses that monitoring plug-ins end with.
enum class Verdict { kOk = 0, kWarning = 1, kCritical = 2, kUnknown = 3 };

struct Judgement {
  Verdict verdict;
  // "smartprobe CRITICAL: failing: /dev/rdisk1; not read: /dev/rdisk4", for one line
  std::string summary;
};

// `faults` are the words for what keeps a good verdict from being trusted, the report's damage
// among them; a damaged report is never well, whatever they are. A drive that fails is worse than
// one that nothing is known about, and that is worse than a worn one: the condition of an unknown
// drive may be any. A report without drives is unknown, since a probe that finds nothing would else
// look well for ever. The summary names every device that it tells of, whatever its length.
Judgement Check(const Report& report, const std::vector<std::string>& faults);

}  // namespace report
