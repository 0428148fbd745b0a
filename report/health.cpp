#include "report/health.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "base/printable_text.h"
#include "report/field_texts.h"

namespace report {
namespace {

constexpr std::uint8_t kInvalidThreshold = 254;
constexpr std::string_view kNoName = "Unknown Attribute";  // the report's words

bool IsTemperature(const Attribute& attribute) {
  return attribute.id == 190 || attribute.id == 194;
}

using Names = std::vector<std::string>;

// "69 sectors reallocated, 2 pending"; empty where none is lost.
std::string SectorsText(const std::vector<SectorCount>& sectors) {
  std::string text;
  for (const auto& [state, count] : sectors) {
    if (count == 0) continue;
    const std::string_view noun = !text.empty() ? " " : count == 1 ? " sector " : " sectors ";
    text.append(text.empty() ? "" : ", ").append(std::to_string(count)).append(noun).append(state);
  }
  return text;
}

std::string FaultText(const Attribute& attribute, Health health) {
  const std::string_view meaning = health == Health::kFailing ? "failure predicted"
                                   : health == Health::kHot   ? "hot, now or once"
                                                              : "worn, plan to replace";
  return NameText(attribute) + " is " + std::to_string(attribute.value) + ", threshold " +
         std::to_string(attribute.threshold) + ": " + std::string(meaning);
}

constexpr std::array<std::string_view, 4> kVerdictWords = {"OK", "WARNING", "CRITICAL", "UNKNOWN"};

Names PathsOf(const Report& report, Health health) {
  Names paths;
  for (const Drive& drive : report.drives) {
    if (HealthOf(drive) != health) continue;
    paths.push_back(PathText(drive.device));
    if (health == Health::kCaution) paths.back() += " (" + SectorsText(drive.sectors) + ")";
  }
  return paths;
}

Names PathsOf(const std::vector<UnreadDrive>& drives) {
  Names paths;
  for (const UnreadDrive& drive : drives) {
    const std::string names = NamesText(drive);
    paths.push_back(PathText(drive.device) + (names.empty() ? "" : " (" + names + ")"));
  }
  return paths;
}

Names LinesOf(const Names& texts) {
  Names lines;
  for (const std::string& text : texts) lines.push_back(base::OneLine(text));
  return lines;
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

Names DisksOf(const Names& disks) {
  Names names;
  for (const std::string& disk : disks) {
    const std::string name = FieldText(disk);
    names.push_back(name.empty() ? "(no name)" : name);
  }
  return names;
}

std::string Count(std::size_t drives) {
  if (drives == 0) return "no drives";
  return std::to_string(drives) + (drives == 1 ? " drive" : " drives");
}

// What a clean bill rests on.
std::string_view Grounds(const Report& report) {
  return report.notATA ? ", no threshold reached, no lost sector counted"
                       : ", no threshold reached";
}

}  // namespace

Health HealthOf(const Attribute& attribute) {
  if (!attribute.reached || attribute.threshold == kInvalidThreshold) return Health::kGood;
  if (attribute.preFailure) return Health::kFailing;
  return IsTemperature(attribute) ? Health::kHot : Health::kWorn;
}

Health HealthOf(const Drive& drive) {
  if (drive.thresholdExceeded) return Health::kFailing;
  Health worst = drive.attributes.empty() ? Health::kNoAttributes : Health::kGood;
  if (!SectorsText(drive.sectors).empty()) worst = Health::kCaution;
  for (const Attribute& attribute : drive.attributes) {
    worst = std::max(worst, HealthOf(attribute));
  }
  return worst;
}

std::string_view HealthWord(Health health) {
  constexpr std::array<std::string_view, 6> kWords = {"OK",   "no attributes", "hot",
                                                      "worn", "caution",       "failing"};
  return kWords.at(static_cast<std::size_t>(health));
}

std::string FaultsText(const Drive& drive) {
  Names faults;
  if (drive.thresholdExceeded) faults.emplace_back("the drive says so itself");
  for (const Attribute& attribute : drive.attributes) {
    const Health health = HealthOf(attribute);
    if (health != Health::kGood) faults.push_back(FaultText(attribute, health));
  }
  const std::string sectors = SectorsText(drive.sectors);
  if (!sectors.empty()) faults.push_back(sectors);

  std::string text;
  for (const std::string& fault : faults) AppendGroup(text, "", {fault});
  return text;
}

std::string HealthText(const Drive& drive) {
  const std::string faults = FaultsText(drive);
  return std::string(HealthWord(HealthOf(drive))).append(faults.empty() ? "" : ": ") + faults;
}

std::string NameText(const Attribute& attribute) {
  if (attribute.name != kNoName && !attribute.name.empty()) return base::OneLine(attribute.name);
  return "attribute " + std::to_string(attribute.id);
}

std::string PathText(std::string_view device) {
  return device.empty() ? "(no path)" : base::OneLine(device);
}

std::string DamageText(const Damage& damage) {
  return "line " + std::to_string(damage.line) + ": " + damage.what;
}

std::vector<std::string> OtherDisksTexts(const Report& report) {
  std::vector<std::string> texts(2);
  AppendGroup(texts[0], "S.M.A.R.T. is missing or off, not read: ", DisksOf(report.withoutSMART));
  AppendGroup(texts[1], "Not ATA, not looked at: ", DisksOf(report.notATA.value_or(Names())));
  std::erase(texts, "");
  return texts;
}

Judgement Check(const Report& report, const std::vector<std::string>& faults) {
  std::string found;
  const bool isFailing = AppendGroup(found, "failing: ", PathsOf(report, Health::kFailing));
  bool isUnknown = report.drives.empty() || report.damage.has_value();
  isUnknown |= AppendGroup(found, "not read: ", PathsOf(report.notRead));
  isUnknown |= AppendGroup(found, "", LinesOf(faults));
  bool isWarning = AppendGroup(found, "caution: ", PathsOf(report, Health::kCaution));
  isWarning |= AppendGroup(found, "worn: ", PathsOf(report, Health::kWorn));
  isWarning |= AppendGroup(found, "hot, now or once: ", PathsOf(report, Health::kHot));
  isWarning |= AppendGroup(found, "attributes not known: ", PathsOf(report, Health::kNoAttributes));
  if (found.empty()) {
    found = Count(report.drives.size()).append(isUnknown ? "" : Grounds(report));
  }
  for (const std::string& text : OtherDisksTexts(report)) AppendGroup(found, "", {text});

  Verdict verdict = isWarning ? Verdict::kWarning : Verdict::kOk;
  if (isUnknown) verdict = Verdict::kUnknown;
  if (isFailing) verdict = Verdict::kCritical;
  return {verdict, std::string("smartprobe ")
                           .append(kVerdictWords.at(static_cast<std::size_t>(verdict)))
                           .append(": ") +
                       found};
}

}  // namespace report
