#include "health/signs.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "base/printable_text.h"
#include "drives/self_tests.h"

namespace health {
namespace {

using drives::LossCount;
using drives::RecordedFacts;
using drives::SelfTest;
using Reasons = std::vector<Reason>;

void MarkFigure(Reason& reason, const RecordedFacts& facts, std::string_view key,
                std::string_view group = "") {
  const drives::Figure* figure = FindFigure(facts, key, group);
  if (figure) reason.figures.push_back(figure);
}

// Marks what counts the loss.
void Mark(Reason& reason, const RecordedFacts& facts, const LossCount& loss) {
  reason.ids.push_back(loss.id);
  MarkFigure(reason, facts, loss.key, loss.group);
}

// Counts that have grown say most.
std::vector<LossCount> GrownFirst(std::vector<LossCount> losses) {
  std::stable_partition(losses.begin(), losses.end(),
                        [](const LossCount& loss) { return loss.growth > 0; });
  return losses;
}

std::string GrowthText(const LossCount& loss) {
  if (loss.growth == 0) return "";
  return fmt::format(", {} of them within {} days", loss.growth, drives::kGrowthDays.count());
}

// Drives with so many reallocated sectors, or so many new ones, rarely last long.
bool IsFailingSoon(const LossCount& loss) {
  constexpr std::uint64_t kMany = 200;
  constexpr std::uint64_t kManyNew = 30;
  return loss.name == drives::kReallocated &&
         (loss.count.value_or(0) >= kMany || loss.growth >= kManyNew);
}

// "69 sectors reallocated, 2 of them within 7 days, 2 pending"
void AddLostSectors(Reasons& reasons, const RecordedFacts& facts) {
  Reason reason{Grade::kCaution, ""};
  reason.isOfCount = true;
  bool isFailingSoon = false;
  for (const LossCount& loss : GrownFirst(facts.losses)) {
    if (!loss.ofSectors || loss.count.value_or(0) == 0) continue;
    const bool isFirst = reason.text.empty();
    const std::string_view noun = !isFirst ? "" : *loss.count == 1 ? "sector " : "sectors ";
    reason.text += fmt::format("{}{} {}{}{}", isFirst ? "" : ", ", *loss.count, noun, loss.name,
                               GrowthText(loss));
    isFailingSoon |= IsFailingSoon(loss);
    Mark(reason, facts, loss);
  }
  if (isFailingSoon) reason.text += "; failing soon: replace it";
  if (!reason.text.empty()) reasons.push_back(reason);
}

void AddErrors(Reasons& reasons, const RecordedFacts& facts) {
  for (const LossCount& loss : facts.losses) {
    if (loss.ofSectors || loss.count.value_or(0) == 0) continue;
    const std::string_view noun = *loss.count == 1 ? "error" : "errors";
    Reason reason{Grade::kCaution,
                  fmt::format("{} {} {}{}", *loss.count, loss.name, noun, GrowthText(loss))};
    reason.isOfCount = true;
    Mark(reason, facts, loss);
    reasons.push_back(reason);
  }
}

// A count of years may come from a cable that is long gone.
void AddCRCErrors(Reasons& reasons, const RecordedFacts& facts) {
  if (!facts.crcErrors || facts.crcErrors->growth == 0) return;
  const std::uint64_t growth = facts.crcErrors->growth;
  Reason reason{Grade::kCaution,
                fmt::format("{} CRC error{} within {} days: check the cable", growth,
                            growth == 1 ? "" : "s", drives::kGrowthDays.count())};
  reason.isOfCount = true;
  Mark(reason, facts, *facts.crcErrors);
  reasons.push_back(reason);
}

// A value that has fallen shows that something was counted.
void AddUnclearCounts(Reasons& reasons, const RecordedFacts& facts) {
  for (const bool ofSectors : {true, false}) {
    Reason reason{Grade::kGood, ofSectors ? "sector count not clear" : "error count not clear"};
    reason.limitsJudgement = true;
    bool isUnclear = false;
    for (const LossCount& loss : facts.losses) {
      if (loss.ofSectors != ofSectors || loss.count) continue;
      isUnclear = true;
      if (loss.hasFallen) reason.ids.push_back(loss.id);
    }
    if (!reason.ids.empty()) reason.grade = Grade::kCaution;
    if (isUnclear) reasons.push_back(reason);
  }
}

// The last one of the log that came to an end. Null if there is none. An aborted one after it says
// nothing.
const SelfTest* LastEnded(const RecordedFacts& facts) {
  const auto ended = std::ranges::find_if(
      facts.selfTests, [](const SelfTest& test) { return test.passed.has_value(); });
  return ended == facts.selfTests.end() ? nullptr : &*ended;
}

// The words without what does not foretell anything.
std::string FailureText(std::string_view status, std::optional<std::uint64_t> lba) {
  constexpr std::string_view kCompleted = "completed: ";
  if (status.starts_with(kCompleted)) status.remove_prefix(kCompleted.size());
  const std::string sector = lba ? fmt::format(" at sector {}", *lba) : "";
  return fmt::format("last self-test failed: {}{}", status, sector);
}

// The status in the S.M.A.R.T. data is that of a test that runs, or else of the last one.
void AddSelfTest(Reasons& reasons, const RecordedFacts& facts) {
  const int status = facts.selfTest.value_or(0);
  const SelfTest* ended = LastEnded(facts);
  if (ended && !*ended->passed) {
    reasons.push_back({Grade::kCaution, FailureText(ended->status, ended->lba)});
  } else if (drives::IsFailedATASelfTest(status)) {
    reasons.push_back({Grade::kCaution, FailureText(drives::ATASelfTestOf(status).status, {})});
  }
  if (status == 1) reasons.push_back({Grade::kGood, "last self-test aborted"});
  if (status == 2) reasons.push_back({Grade::kGood, "last self-test interrupted"});
  if (status == drives::kATASelfTestRuns) reasons.push_back({Grade::kGood, "self-test running"});
  if (!facts.hasBadSelfTestLog) return;
  Reason reason{Grade::kGood, "self-test log not readable"};
  reason.limitsJudgement = true;
  reasons.push_back(reason);
}

void AddLifeLeft(Reasons& reasons, const RecordedFacts& facts) {
  constexpr int kLittle = 10;
  Reason reason{Grade::kWorn, ""};
  for (const auto& [id, percent] : facts.lifeLeft) {
    if (percent > kLittle) continue;
    if (reason.text.empty())
      reason.text = fmt::format("{} left of 100 by attribute {}", percent, id);
    reason.ids.push_back(id);
  }
  if (!reason.ids.empty()) reasons.push_back(reason);
}

// By the drive's own count, which may go beyond 100 %.
void AddLifeUsed(Reasons& reasons, const RecordedFacts& facts) {
  const int used = facts.percentageUsed.value_or(0);
  if (used < 100) return;
  Reason reason{Grade::kWorn, fmt::format("{} % of its life used", used)};
  MarkFigure(reason, facts, facts.percentageUsedKey);
  reasons.push_back(reason);
}

// In degrees Celsius, from which on a drive is too hot.
int HeatLimit(const RecordedFacts& facts) {
  const int usual = facts.rotationRate == 0 ? 71 : 61;
  return facts.temperatureLimit.value_or(usual);
}

void AddHeat(Reasons& reasons, const RecordedFacts& facts) {
  if (!facts.temperature || *facts.temperature < HeatLimit(facts)) return;
  Reason reason{Grade::kHot, fmt::format("{} °C", *facts.temperature), {facts.temperatureId}};
  if (facts.temperatureLimit) reason.text += fmt::format(", limit {} °C", *facts.temperatureLimit);
  MarkFigure(reason, facts, facts.temperatureKey);
  reasons.push_back(reason);
}

void AddMissingLogs(Reasons& reasons, const RecordedFacts& facts) {
  if (facts.whyNoLogs.empty()) return;
  Reason reason{Grade::kGood, "logs not read: " + base::OneLine(facts.whyNoLogs)};
  reason.limitsJudgement = true;
  reasons.push_back(reason);
}

void AddMissingCondition(Reasons& reasons, const RecordedFacts& facts) {
  if (facts.hasCondition) return;
  Reason reason{Grade::kGood, "the drive's own self-assessment: no answer"};
  reason.limitsJudgement = true;
  reasons.push_back(reason);
}

void AddAge(Reasons& reasons, const RecordedFacts& facts) {
  if (!facts.age) return;
  const auto days = facts.age->count();
  Reason reason{Grade::kGood, fmt::format("answers are {} day{} old", days, days == 1 ? "" : "s")};
  reason.limitsJudgement = true;
  reasons.push_back(reason);
}

}  // namespace

void AddSigns(Reasons& reasons, const RecordedFacts& facts) {
  AddLostSectors(reasons, facts);
  AddErrors(reasons, facts);
  AddCRCErrors(reasons, facts);
  AddUnclearCounts(reasons, facts);
  AddSelfTest(reasons, facts);
  AddLifeLeft(reasons, facts);
  AddLifeUsed(reasons, facts);
  AddHeat(reasons, facts);
  AddMissingLogs(reasons, facts);
  AddMissingCondition(reasons, facts);
  AddAge(reasons, facts);
}

std::optional<bool> HasFailedSelfTest(const RecordedFacts& facts) {
  const SelfTest* ended = LastEnded(facts);
  if (ended && !*ended->passed) return true;
  const bool isRunning = facts.selfTest == drives::kATASelfTestRuns;
  if (facts.selfTest && !isRunning) return drives::IsFailedATASelfTest(*facts.selfTest);
  return ended ? std::optional(false) : std::nullopt;
}

bool IsNearLimit(const drives::Drive& drive) {
  constexpr int kMargin = 3;
  if (!drive.recorded || !drive.recorded->temperature) return false;
  return *drive.recorded->temperature > HeatLimit(*drive.recorded) - kMargin;
}

std::string StudyText(const Reason& reason, const drives::Drive& drive) {
  struct Odds {
    std::uint8_t id;
    std::string_view sign;
    int times;
  };
  // E. Pinheiro, W.-D. Weber, L. A. Barroso: Failure Trends in a Large Disk Drive Population, 2007.
  constexpr std::array kOdds{Odds{198, "an uncorrectable sector", 39},
                             Odds{197, "a pending sector", 16},
                             Odds{5, "a reallocated sector", 14}};
  if (drive.recorded && drive.recorded->rotationRate == 0) return "";
  for (const auto& [id, sign, times] : kOdds) {
    if (reason.limitsJudgement || std::ranges::find(reason.ids, id) == reason.ids.end()) continue;
    return fmt::format(
        "In a study of 100,000 hard disks, one with {} was {} times as likely to fail within 60 "
        "days.",
        sign, times);
  }
  return "";
}

}  // namespace health
