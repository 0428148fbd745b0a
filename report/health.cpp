#include "report/health.h"

#include <algorithm>

namespace report {

Health HealthOf(const Attribute& attribute) {
  if (!attribute.reached) return Health::kGood;
  return attribute.preFailure ? Health::kFailing : Health::kWorn;
}

Health HealthOf(const Drive& drive) {
  Health worst = drive.thresholdExceeded ? Health::kFailing : Health::kGood;
  for (const Attribute& attribute : drive.attributes) {
    worst = std::max(worst, HealthOf(attribute));
  }
  return worst;
}

}  // namespace report
