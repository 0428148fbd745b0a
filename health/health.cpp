#include "health/health.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/printable_text.h"
#include "health/log_signs.h"
#include "health/signs.h"

namespace health {
namespace {

using drives::Attribute;
using drives::Drive;

std::string ReachedText(const Attribute& attribute, Grade grade) {
  const std::string_view meaning = grade == Grade::kFailing ? "failure predicted"
                                   : grade == Grade::kHot   ? RowOf(grade).heading
                                                            : "worn, plan to replace";
  return fmt::format("{} is {}, threshold {}: {}", NameText(attribute), attribute.value,
                     attribute.threshold, meaning);
}

void AddThresholdReasons(std::vector<Reason>& reasons, const Drive& drive) {
  for (const Attribute& attribute : drive.attributes) {
    const Grade grade = GradeOf(attribute);
    if (grade == Grade::kGood) continue;
    reasons.push_back({grade, ReachedText(attribute, grade)});
  }
  for (const Attribute& attribute : drive.attributes) {
    if (!attribute.preFailure || !WasReached(attribute)) continue;
    reasons.push_back({Grade::kCaution, NameText(attribute) + " was at its threshold once"});
  }
}

}  // namespace

bool IsReached(const Attribute& attribute) {
  constexpr std::uint8_t kInvalidThreshold = 254;
  return attribute.warns && attribute.threshold != kInvalidThreshold;
}

bool WasReached(const Attribute& attribute) {
  if (!attribute.counts || !drives::IsValidValue(attribute.threshold)) return false;
  const int worst = attribute.counts->worst;
  return drives::IsValidValue(worst) && worst <= attribute.threshold &&
         attribute.value > attribute.threshold;
}

Grade GradeOf(const Attribute& attribute) {
  if (!IsReached(attribute)) return Grade::kGood;
  if (attribute.preFailure) return Grade::kFailing;
  return drives::IsTemperature(attribute.id) ? Grade::kHot : Grade::kWorn;
}

Health HealthOf(const Drive& drive) {
  Health health;
  const bool isATA = drive.protocol == drives::Protocol::kATA;
  if (isATA && drive.thresholdExceeded) {
    health.reasons.push_back({Grade::kFailing, "the drive's own self-assessment: failed"});
  }
  AddThresholdReasons(health.reasons, drive);
  if (!isATA) AddLogSigns(health.reasons, drive);
  if (drive.recorded) AddSigns(health.reasons, *drive.recorded);
  if (isATA && drive.attributes.empty()) health.grade = Grade::kNoAttributes;
  for (const Reason& reason : health.reasons) health.grade = std::max(health.grade, reason.grade);
  return health;
}

Grade RowGrade(const Health& health, const Attribute& attribute) {
  Grade grade = GradeOf(attribute);
  if (attribute.preFailure && WasReached(attribute)) grade = std::max(grade, Grade::kCaution);
  for (const Reason& reason : health.reasons) {
    const bool isOfRow = std::ranges::find(reason.ids, attribute.id) != reason.ids.end();
    if (isOfRow) grade = std::max(grade, reason.grade);
  }
  return grade;
}

Grade FigureGrade(const Health& health, const drives::Figure& figure) {
  Grade grade = Grade::kGood;
  for (const Reason& reason : health.reasons) {
    const bool isMarked = std::ranges::find(reason.figures, &figure) != reason.figures.end();
    if (isMarked) grade = std::max(grade, reason.grade);
  }
  return grade;
}

Grade GradeOf(const drives::GoneDrive& gone) {
  const bool wasFailing = gone.drive && HealthOf(*gone.drive).grade == Grade::kFailing;
  return wasFailing ? Grade::kFailing : Grade::kGone;
}

bool CountsNoLoss(const drives::Host& host) {
  const auto isZero = [](const drives::LossCount& loss) { return loss.count == 0U; };
  return std::ranges::all_of(host.drives, [&](const Drive& drive) {
    return drive.recorded && !drive.recorded->losses.empty() &&
           std::ranges::all_of(drive.recorded->losses, isZero);
  });
}

std::string ReasonsText(const Health& health) {
  std::string text;
  for (const Reason& reason : health.reasons) {
    text.append(text.empty() ? "" : "; ").append(reason.text);
  }
  return text;
}

std::string NameText(const Attribute& attribute) {
  constexpr std::string_view kNoName = "Unknown Attribute";  // the report's words
  if (attribute.name != kNoName && !attribute.name.empty()) return base::OneLine(attribute.name);
  return fmt::format("attribute {}", attribute.id);
}

}  // namespace health
