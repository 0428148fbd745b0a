#include "health/health.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>

#include "base/printable_text.h"

namespace health {
namespace {

using drives::Attribute;
using drives::Drive;
using drives::SectorCount;

bool IsTemperature(const Attribute& attribute) {
  return attribute.id == 190 || attribute.id == 194;
}

std::string ReachedText(const Attribute& attribute, Grade grade) {
  const std::string_view meaning = grade == Grade::kFailing ? "failure predicted"
                                   : grade == Grade::kHot   ? "hot, now or once"
                                                            : "worn, plan to replace";
  return fmt::format("{} is {}, threshold {}: {}", NameText(attribute), attribute.value,
                     attribute.threshold, meaning);
}

// "69 sectors reallocated, 2 pending"; empty where none is lost.
std::string LostText(const std::vector<SectorCount>& sectors) {
  std::string text;
  for (const auto& [state, count] : sectors) {
    if (count.value_or(0) == 0) continue;
    const std::string_view noun = !text.empty() ? "" : *count == 1 ? "sector " : "sectors ";
    text += fmt::format("{}{} {}{}", text.empty() ? "" : ", ", *count, noun, state);
  }
  return text;
}

void AddReason(Health& health, Grade grade, std::string text) {
  if (!text.empty()) health.reasons.push_back({grade, std::move(text)});
}

}  // namespace

bool IsReached(const Attribute& attribute) {
  constexpr std::uint8_t kInvalidThreshold = 254;
  return attribute.warns && attribute.threshold != kInvalidThreshold;
}

Grade GradeOf(const Attribute& attribute) {
  if (!IsReached(attribute)) return Grade::kGood;
  if (attribute.preFailure) return Grade::kFailing;
  return IsTemperature(attribute) ? Grade::kHot : Grade::kWorn;
}

Health HealthOf(const Drive& drive) {
  Health health;
  if (drive.thresholdExceeded) AddReason(health, Grade::kFailing, "the drive says so itself");
  for (const Attribute& attribute : drive.attributes) {
    const Grade grade = GradeOf(attribute);
    if (grade != Grade::kGood) AddReason(health, grade, ReachedText(attribute, grade));
  }
  if (drive.recorded) AddReason(health, Grade::kCaution, LostText(drive.recorded->sectors));
  if (HasUnclearCount(drive)) AddReason(health, Grade::kGood, "sector count not clear");
  if (drive.attributes.empty()) health.grade = Grade::kNoAttributes;
  for (const Reason& reason : health.reasons) health.grade = std::max(health.grade, reason.grade);
  return health;
}

bool HasUnclearCount(const Drive& drive) {
  return drive.recorded && std::ranges::any_of(drive.recorded->sectors,
                                               [](const auto& sector) { return !sector.count; });
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
