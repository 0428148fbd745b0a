// What the report says about the health of a drive, in one of four grades.
#pragma once

#include <string_view>

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
// the worst of its attributes', or kFailing when it reports the condition itself.
Health HealthOf(const Attribute& attribute);
Health HealthOf(const Drive& drive);

// What every form for people calls it: one or two words, static.
std::string_view HealthWord(Health health);

// The attribute whose value is the least above its threshold, or the most below it; the first
// of several. Only valid figures count, and only a threshold that can be reached and passed:
// 1 to 253. Null: there is none. The drive owns it.
const Attribute* NearestToThreshold(const Drive& drive);

}  // namespace report
