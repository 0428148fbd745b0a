#include "drives/history.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace drives {
namespace {

bool IsSameSource(const LossCount& one, const LossCount& other) {
  return one.id == other.id && one.name == other.name && one.key == other.key &&
         one.group == other.group;
}

std::optional<std::uint64_t> CountIn(const Moment& moment, const LossCount& loss) {
  for (const LossCount& counted : moment.losses) {
    if (IsSameSource(counted, loss)) return counted.count;
  }
  const bool isCRC = moment.crcErrors && IsSameSource(*moment.crcErrors, loss);
  return isCRC ? moment.crcErrors->count : std::nullopt;
}

bool IsWithinDays(const Moment& moment, std::chrono::sys_seconds now) {
  using std::chrono::days;
  return std::chrono::floor<days>(now) - std::chrono::floor<days>(moment.date) <= kGrowthDays;
}

void AddGrowth(LossCount& loss, const std::vector<Moment>& earlier, std::chrono::sys_seconds now) {
  if (!loss.count) return;
  std::uint64_t least = *loss.count;
  for (const Moment& moment : earlier) {
    if (IsWithinDays(moment, now)) least = std::min(least, CountIn(moment, loss).value_or(least));
  }
  loss.growth = *loss.count - least;
}

}  // namespace

Moment MomentOf(const RecordedFacts& facts) {
  return {*facts.date, facts.temperature, facts.percentageUsed, facts.losses, facts.crcErrors};
}

void AddHistory(RecordedFacts& facts, std::vector<Moment> earlier) {
  if (earlier.empty()) return;
  for (LossCount& loss : facts.losses) AddGrowth(loss, earlier, *facts.date);
  if (facts.crcErrors) AddGrowth(*facts.crcErrors, earlier, *facts.date);
  facts.history = std::move(earlier);
  facts.history.push_back(MomentOf(facts));
}

}  // namespace drives
