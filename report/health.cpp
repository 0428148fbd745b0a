#include "report/health.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "base/printable_text.h"

namespace report {
namespace {

bool CanBeNear(const Attribute& attribute) {
  return attribute.valid && attribute.threshold >= 1 && attribute.threshold <= 253;
}

int Distance(const Attribute& attribute) { return attribute.value - attribute.threshold; }

using Names = std::vector<std::string>;

constexpr std::array<std::string_view, 4> kVerdictWords = {"OK", "WARNING", "CRITICAL", "UNKNOWN"};

Names PathsOf(const Report& report, Health health) {
  Names paths;
  for (const Drive& drive : report.drives) {
    if (HealthOf(drive) == health) paths.push_back(PathText(drive.device));
  }
  return paths;
}

Names NamesOf(const Names& texts, std::string (*nameOf)(std::string_view)) {
  Names names;
  for (const std::string& text : texts) names.push_back(nameOf(text));
  return names;
}

// Appends `heading` and the names after it, if there are any, and returns whether there are.
bool AppendGroup(std::string& text, std::string_view heading, const Names& names) {
  if (names.empty()) return false;
  if (!text.empty()) text += "; ";
  text += heading;
  for (const std::string& name : names) {
    if (&name != &names.front()) text += ", ";
    text += name;
  }
  return true;
}

std::string Count(std::size_t drives) {
  if (drives == 0) return "no drives";
  return std::to_string(drives) + (drives == 1 ? " drive" : " drives");
}

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
  constexpr std::array<std::string_view, 4> kWords = {"OK", "no attributes", "worn", "failing"};
  return kWords.at(static_cast<std::size_t>(health));
}

std::string PathText(std::string_view device) {
  return device.empty() ? "(no path)" : base::OneLine(device);
}

std::string DamageText(const Damage& damage) {
  return "line " + std::to_string(damage.line) + ": " + damage.what;
}

const Attribute* FindNearestToThreshold(const Drive& drive) {
  const Attribute* nearest = nullptr;
  for (const Attribute& attribute : drive.attributes) {
    if (!CanBeNear(attribute)) continue;
    if (nearest == nullptr || Distance(attribute) < Distance(*nearest)) nearest = &attribute;
  }
  return nearest;
}

Judgement Check(const Report& report, const std::vector<std::string>& faults) {
  std::string found;
  const bool isFailing = AppendGroup(found, "failing: ", PathsOf(report, Health::kFailing));
  bool isUnknown = report.drives.empty() || report.damage.has_value();
  isUnknown |= AppendGroup(found, "not read: ", NamesOf(report.notRead, PathText));
  isUnknown |= AppendGroup(found, "", NamesOf(faults, base::OneLine));
  bool isWarning = AppendGroup(found, "worn: ", PathsOf(report, Health::kWorn));
  isWarning |= AppendGroup(found, "attributes not known: ", PathsOf(report, Health::kNoAttributes));
  if (found.empty()) found = Count(report.drives.size());

  Verdict verdict = isWarning ? Verdict::kWarning : Verdict::kOk;
  if (isUnknown) verdict = Verdict::kUnknown;
  if (isFailing) verdict = Verdict::kCritical;
  return {verdict, std::string("smartprobe ")
                           .append(kVerdictWords.at(static_cast<std::size_t>(verdict)))
                           .append(": ") +
                       found};
}

}  // namespace report
