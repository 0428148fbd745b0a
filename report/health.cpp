#include "report/health.h"

#include <algorithm>

namespace report {
namespace {

bool CanBeNear(const Attribute& attribute) {
  return attribute.valid && attribute.threshold >= 1 && attribute.threshold <= 253;
}

int Distance(const Attribute& attribute) { return attribute.value - attribute.threshold; }

}  // namespace

Health HealthOf(const Attribute& attribute) {
  if (!attribute.reached) return Health::kGood;
  return attribute.preFailure ? Health::kFailing : Health::kWorn;
}

Health HealthOf(const Drive& drive) {
  if (drive.thresholdExceeded) return Health::kFailing;
  if (drive.attributes.empty()) return Health::kNoAttributes;
  Health worst = Health::kGood;
  for (const Attribute& attribute : drive.attributes) {
    worst = std::max(worst, HealthOf(attribute));
  }
  return worst;
}

std::string_view HealthWord(Health health) {
  switch (health) {
    case Health::kGood:
      return "OK";
    case Health::kNoAttributes:
      return "no attributes";
    case Health::kWorn:
      return "worn";
    case Health::kFailing:
      break;
  }
  return "failing";
}

const Attribute* NearestToThreshold(const Drive& drive) {
  const Attribute* nearest = nullptr;
  for (const Attribute& attribute : drive.attributes) {
    if (!CanBeNear(attribute)) continue;
    if (nearest == nullptr || Distance(attribute) < Distance(*nearest)) nearest = &attribute;
  }
  return nearest;
}

}  // namespace report
