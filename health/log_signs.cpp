#include "health/log_signs.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "base/count128.h"
#include "drives/nvme_logs.h"
#include "drives/scsi_logs.h"

namespace health {
namespace {

using drives::Drive;
using drives::Figure;
using drives::RecordedFacts;
using Reasons = std::vector<Reason>;

// Adds a reason that marks the figure of that key.
void Add(Reasons& reasons, const RecordedFacts& facts, Grade grade, std::string text,
         std::string_view key) {
  Reason reason{grade, std::move(text)};
  if (const Figure* figure = FindFigure(facts, key)) reason.figures.push_back(figure);
  reasons.push_back(std::move(reason));
}

// The standard's words, by bit.
void AddCriticalWarning(Reasons& reasons, const RecordedFacts& facts) {
  constexpr std::array<std::string_view, 8> kWords = {
      "the available spare is below its threshold",
      "a temperature is above or below its threshold",
      "the reliability is degraded",
      "the media are in read-only mode",
      "the backup of the volatile memory has failed",
      "the persistent memory region is read-only or unreliable",
      "an unknown critical warning (bit 6)",
      "an unknown critical warning (bit 7)"};
  const int warning = facts.criticalWarning.value_or(0);
  for (std::size_t bit = 0; bit < kWords.size(); bit++) {
    const int flag = 1 << bit;
    if ((warning & flag) == 0) continue;
    const Grade grade = flag == drives::kTemperatureWarning ? Grade::kHot : Grade::kFailing;
    Add(reasons, facts, grade, std::string(kWords.at(bit)), "critical_warning");
  }
}

// A drive that warns of it itself has said so already.
void AddSpare(Reasons& reasons, const RecordedFacts& facts) {
  constexpr std::string_view kSpare = "available_spare";
  const Figure* spare = FindFigure(facts, kSpare);
  const Figure* threshold = FindFigure(facts, "available_spare_threshold");
  if (!spare || !threshold || (facts.criticalWarning.value_or(0) & 1) != 0) return;
  const std::uint64_t percent = Saturated(spare->value);
  const std::uint64_t least = Saturated(threshold->value);
  if (percent >= least) return;
  Add(reasons, facts, Grade::kFailing, fmt::format("{} % spare, threshold {} %", percent, least),
      kSpare);
}

void AddException(Reasons& reasons, const RecordedFacts& facts) {
  if (!facts.exception || facts.exception->words.empty()) return;
  const auto& [code, qualifier, words] = *facts.exception;
  const bool isHeat = code == drives::kWarning && qualifier == drives::kTemperatureQualifier;
  const Grade grade = code == drives::kFailurePrediction ? Grade::kFailing
                      : isHeat                           ? Grade::kHot
                                                         : Grade::kCaution;
  reasons.push_back({grade, "the disk reports: " + words});
}

// Temperatures, hours and cycles say nothing of a disk's health, and "no exception" in sense data
// is what every disk answers.
bool IsNothingKnown(const RecordedFacts& facts) {
  const bool hasVerdict = facts.hasExceptionPage || facts.criticalWarning ||
                          (facts.exception && !facts.exception->words.empty());
  const bool countsErrors = std::ranges::any_of(facts.losses, [](const drives::LossCount& loss) {
    return !loss.ofSectors || loss.count.value_or(0) > 0;
  });
  return !hasVerdict && !countsErrors && !facts.percentageUsed;
}

}  // namespace

void AddLogSigns(Reasons& reasons, const Drive& drive) {
  if (!drive.recorded) return;
  const RecordedFacts& facts = *drive.recorded;
  AddCriticalWarning(reasons, facts);
  AddException(reasons, facts);
  AddSpare(reasons, facts);
  if (IsNothingKnown(facts)) {
    reasons.push_back({Grade::kNothingKnown, "the disk sends no log page of its health"});
  }
}

}  // namespace health
