#include "drives/history.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace drives {
namespace {

std::optional<std::uint64_t> CountIn(const Moment& moment, const LossCount& loss) {
  for (const LossCount& counted : moment.losses) {
    if (IsSameSource(counted, loss)) return counted.count;
  }
  const bool isCRC = moment.crcErrors && IsSameSource(*moment.crcErrors, loss);
  return isCRC ? moment.crcErrors->count : std::nullopt;
}

// In days of the calendar, or a few hours more: a drive that sleeps for so many days is read soon
// after.
bool IsWithinDays(const Moment& moment, std::chrono::sys_seconds now) {
  using std::chrono::days;
  constexpr auto kMost = kGrowthDays + std::chrono::hours(3);
  const auto calendarDays = std::chrono::floor<days>(now) - std::chrono::floor<days>(moment.date);
  return moment.date <= now && (calendarDays <= kGrowthDays || now - moment.date <= kMost);
}

// Reallocated sectors never become fewer, so that one count below the others is a bad answer: the
// first one counts. Others may come and go, and grow from the least.
void AddGrowth(LossCount& loss, const std::vector<Moment>& earlier, std::chrono::sys_seconds now) {
  if (!loss.count) return;
  std::optional<std::uint64_t> start;
  for (const Moment& moment : earlier) {
    const auto count = IsWithinDays(moment, now) ? CountIn(moment, loss) : std::nullopt;
    if (!count || (start && loss.name == kReallocated)) continue;
    start = std::min(start.value_or(*count), *count);
  }
  const std::uint64_t before = std::min(start.value_or(*loss.count), *loss.count);
  loss.growth = *loss.count - before;
}

}  // namespace

bool IsSameSource(const LossCount& one, const LossCount& other) {
  return one.id == other.id && one.name == other.name && one.key == other.key &&
         one.group == other.group;
}

Moment MomentOf(const RecordedFacts& facts) {
  return {*facts.date, facts.temperature, facts.percentageUsed, facts.losses, facts.crcErrors};
}

void AddHistory(RecordedFacts& facts, std::vector<Moment> earlier) {
  std::ranges::stable_sort(earlier, {}, &Moment::date);
  std::erase_if(earlier, [&](const Moment& moment) { return moment.date > *facts.date; });
  if (earlier.empty()) return;
  for (LossCount& loss : facts.losses) AddGrowth(loss, earlier, *facts.date);
  if (facts.crcErrors) AddGrowth(*facts.crcErrors, earlier, *facts.date);
  facts.history = std::move(earlier);
  facts.history.push_back(MomentOf(facts));
}

}  // namespace drives
