#include "tools/history.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "drives/identify_data.h"
#include "machines/entries/device_entries.h"
#include "machines/entries/drive_logs.h"

namespace tools {
namespace {

using platform::DriveAnswers;
using platform::Entry;
using std::chrono::days;
using std::chrono::sys_seconds;

// One a day for so long, and so long a drive that is gone is remembered.
constexpr days kMonth{31};

// Of NVMe drives each namespace is a disk of its own: "n1" of "nvme0n1".
std::string NamespaceOf(const Entry& device) {
  const std::string_view name = machines::DiskName(device);
  return name.starts_with("nvme") ? std::string(name.substr(name.rfind('n'))) : "";
}

struct Names {
  std::string product, serial;
};

DriveAnswers AnswersOf(const Entry& device) {
  return device.drive ? device.drive() : DriveAnswers();
}

Names NamesOf(const Entry& device) {
  const auto identify = AnswersOf(device).identify.Block();
  if (identify) return {drives::ModelNumber(*identify), drives::SerialNumber(*identify)};
  return {std::string(machines::Characteristic(device, machines::kProductNameKey)),
          std::string(machines::Characteristic(device, machines::kSerialNumberKey))};
}

// Whether the serial numbers below are masked, all of them.
bool AreMasked(const std::vector<Entry>& entries) {
  bool areMasked = false;
  for (const Entry& entry : entries) {
    const std::string serial = NamesOf(entry).serial;
    if (!serial.empty() && serial.find_first_not_of("X ") != std::string::npos) return false;
    const bool areBelow = AreMasked(entry.children);
    areMasked |= areBelow || !serial.empty();
  }
  return areMasked;
}

// By what a drive is known. Empty: by nothing.
std::string KeyOf(const Entry& device, bool isMasked) {
  auto [product, serial] = NamesOf(device);
  if (isMasked) serial.assign(serial.size(), 'X');
  const std::string identity = machines::IdentityOf(product, serial);
  return identity.empty() ? "" : identity + NamespaceOf(device);
}

template <typename AnyEntry>  // Entry or const Entry
using Drives = std::map<std::string, AnyEntry*>;

// The drives below by what they are known by; null for what several share.
template <typename Entries, typename AnyEntry>
void Collect(Entries& entries, bool isMasked, Drives<AnyEntry>& drives) {
  for (auto& entry : entries) {
    Collect(entry.children, isMasked, drives);
    const std::string key = KeyOf(entry, isMasked);
    if (key.empty()) continue;
    const auto [drive, isNew] = drives.try_emplace(key, &entry);
    if (!isNew) drive->second = nullptr;
  }
}

bool SaySomething(const DriveAnswers& answers) {
  return answers.date && answers.whyNotOpened.empty() &&
         (answers.data.succeeds || !answers.logs.empty());
}

// Only what changes, of answers that say something. nullopt for others.
std::optional<DriveAnswers> Earlier(const DriveAnswers& answers) {
  if (!SaySomething(answers)) return std::nullopt;
  DriveAnswers earlier;
  earlier.date = answers.date;
  earlier.exceeded = answers.exceeded;
  earlier.data = answers.data;
  for (const auto& [name, bytes] : answers.logs) {
    if (machines::ChangesWithTime(name)) earlier.logs.emplace(name, bytes);
  }
  return earlier;
}

// The day or the week of the date, as a number that no other has.
std::pair<bool, int> SlotOf(sys_seconds date, sys_seconds now) {
  const auto day = std::chrono::floor<days>(date);
  const bool isOld = std::chrono::floor<days>(now) - day > kMonth;
  const auto number = static_cast<int>(day.time_since_epoch().count());
  return {isOld, isOld ? number / 7 : number};
}

// The date that ages are counted from: now, unless the clock of now is more likely to be wrong than
// those of the answers, which are sorted. It is behind at least two of them, or more than a month
// after the last one. Then that one's date, so that nothing is lost by one wrong clock.
sys_seconds Reference(const std::vector<DriveAnswers>& earlier, sys_seconds now) {
  if (earlier.empty()) return now;
  const sys_seconds last = *earlier.back().date;
  const bool isBehind = earlier.size() > 1 && *earlier[earlier.size() - 2].date > now + days(1);
  return isBehind || now - last > kMonth ? last : now;
}

// Of each slot the last, and none of that of the current answers, which are its last. The only one
// there is stays, so that there is something to compare with.
std::vector<DriveAnswers> Thinned(std::vector<DriveAnswers> earlier,
                                  const std::optional<sys_seconds>& current,
                                  const HistoryRules& rules) {
  std::ranges::stable_sort(earlier, {}, [](const DriveAnswers& each) { return *each.date; });
  const sys_seconds now = Reference(earlier, rules.now);
  std::erase_if(earlier, [&](const DriveAnswers& each) {
    return *each.date > now || now - *each.date > rules.kept || each.date == current;
  });
  if (earlier.size() < 2) return earlier;
  std::set<std::pair<bool, int>> taken;
  if (current) taken.insert(SlotOf(*current, now));
  std::vector<DriveAnswers> kept;
  std::ranges::reverse(earlier);
  for (DriveAnswers& each : earlier) {
    if (taken.insert(SlotOf(*each.date, now)).second) kept.push_back(std::move(each));
  }
  if (kept.empty()) kept.push_back(std::move(earlier.back()));
  std::ranges::reverse(kept);
  return kept;
}

// What never changes, of a drive that has not told it this time.
void KeepNames(DriveAnswers& answers, const DriveAnswers& before) {
  if (!answers.identify.succeeds) answers.identify = before.identify;
  if (!answers.thresholds.succeeds) answers.thresholds = before.thresholds;
}

void TakeEarlier(Entry& device, const Entry& before, const HistoryRules& rules) {
  const DriveAnswers last = before.drive();
  DriveAnswers answers = AnswersOf(device);
  if (!device.drive) answers.whyNotOpened = "it answered before, and no longer does";
  if (!answers.whyNotOpened.empty()) {
    KeepNames(answers, last);
    device.drive = [answers] { return answers; };
  }
  std::vector<DriveAnswers> earlier = before.earlier;
  if (auto told = Earlier(last)) earlier.push_back(std::move(*told));
  const bool saysSomething = SaySomething(answers);
  device.earlier = Thinned(std::move(earlier), saysSomething ? answers.date : std::nullopt, rules);
}

// The entry of a drive that is gone, whatever it was before, with what it said last when it could
// be read. nullopt once it is forgotten.
std::optional<Entry> MakeGone(const Entry& before, const HistoryRules& rules) {
  Entry gone = before;
  gone.name = gone.className = machines::kOtherDiskClass;
  gone.goneSince = std::min(before.goneSince.value_or(rules.now), rules.now);
  if (rules.now - *gone.goneSince > kMonth) return std::nullopt;
  gone.earlier = Thinned(before.earlier, std::nullopt, rules);
  const DriveAnswers last = before.drive();
  if (SaySomething(last) || gone.earlier.empty()) return gone;
  DriveAnswers told = gone.earlier.back();
  KeepNames(told, last);
  gone.earlier.pop_back();
  gone.drive = [told] { return told; };
  return gone;
}

// A drive that did not tell its names has those of the kernel, which are shorter or none: it is the
// one that was at its place before, if nothing that is known speaks against it.
Entry* FindUnnamed(std::vector<Entry>& entries, const Entry& before) {
  const Names old = NamesOf(before);
  for (Entry& entry : entries) {
    const Names names = NamesOf(entry);
    const bool isUnread = entry.drive && !AnswersOf(entry).whyNotOpened.empty();
    const bool fits = old.product.starts_with(names.product) &&
                      (names.serial.empty() || names.serial == old.serial);
    const bool isThere = machines::DiskName(entry) == machines::DiskName(before);
    if (isUnread && fits && isThere && !entry.goneSince) return &entry;
    if (Entry* below = FindUnnamed(entry.children, before)) return below;
  }
  return nullptr;
}

}  // namespace

void AddHistory(platform::Machine& machine, const platform::Machine& before,
                const HistoryRules& rules) {
  // Whose serial numbers were masked is not known.
  if (AreMasked(before.roots) && !rules.areSerialsMasked) return;
  Drives<Entry> now;
  Collect(machine.roots, rules.areSerialsMasked, now);
  Drives<const Entry> then;
  Collect(before.roots, rules.areSerialsMasked, then);
  std::vector<Entry> gone;
  for (const auto& [key, device] : then) {
    if (!device || !device->drive) continue;
    const auto found = now.find(key);
    Entry* same = found == now.end() ? FindUnnamed(machine.roots, *device) : found->second;
    if (same) {
      TakeEarlier(*same, *device, rules);
    } else if (found == now.end()) {
      if (auto entry = MakeGone(*device, rules)) gone.push_back(std::move(*entry));
    }
  }
  auto& children = machine.roots.front().children;
  children.insert(children.end(), gone.begin(), gone.end());
}

}  // namespace tools
