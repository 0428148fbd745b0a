// What the report says about the health of a drive, in one of three grades.
#pragma once

#include "report/report.h"

namespace report {

// Each is worse than the one before it.
enum class Health {
  kGood,
  kWorn,     // a life-span threshold is reached
  kFailing,  // a pre-failure threshold is reached, or the drive reports the condition
};

Health HealthOf(const Attribute& attribute);
Health HealthOf(const Drive& drive);

}  // namespace report
