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

Names NamesOf(const Entry& device) {
  const auto identify = device.drive().identify.Block();
  if (identify) return {drives::ModelNumber(*identify), drives::SerialNumber(*identify)};
  return {std::string(machines::Characteristic(device, machines::kProductNameKey)),
          std::string(machines::Characteristic(device, machines::kSerialNumberKey))};
}

// Whether a serial number below is masked.
bool IsMasked(const std::vector<Entry>& entries) {
  return std::ranges::any_of(entries, [](const Entry& entry) {
    const std::string serial = entry.drive ? NamesOf(entry).serial : "";
    const bool isX = !serial.empty() && serial.find_first_not_of("X ") == std::string::npos;
    return isX || IsMasked(entry.children);
  });
}

// By what a drive is known. Empty: by nothing.
std::string KeyOf(const Entry& device, bool isMasked) {
  if (!device.drive) return "";
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

// Only what changes, of answers that say something. nullopt for others.
std::optional<DriveAnswers> Earlier(const DriveAnswers& answers) {
  if (!answers.date || !answers.whyNotOpened.empty()) return std::nullopt;
  DriveAnswers earlier;
  earlier.date = answers.date;
  earlier.data = answers.data;
  for (const auto& [name, bytes] : answers.logs) {
    if (machines::ChangesWithTime(name)) earlier.logs.emplace(name, bytes);
  }
  const bool saysNothing = !earlier.data.succeeds && earlier.logs.empty();
  return saysNothing ? std::nullopt : std::optional(std::move(earlier));
}

// The day or the week of the date, as a number that no other has.
std::pair<bool, int> SlotOf(sys_seconds date, sys_seconds now) {
  const auto day = std::chrono::floor<days>(date);
  const bool isOld = std::chrono::floor<days>(now) - day > kMonth;
  const auto number = static_cast<int>(day.time_since_epoch().count());
  return {isOld, isOld ? number / 7 : number};
}

// Of each slot the last, and none of that of the current answers, which are its last.
std::vector<DriveAnswers> Thinned(std::vector<DriveAnswers> earlier,
                                  const std::optional<sys_seconds>& current,
                                  const HistoryRules& rules) {
  std::ranges::stable_sort(earlier, {}, [](const DriveAnswers& each) { return *each.date; });
  std::erase_if(earlier, [&](const DriveAnswers& each) {
    return *each.date > rules.now || rules.now - *each.date > rules.kept;
  });
  std::set<std::pair<bool, int>> taken;
  if (current) taken.insert(SlotOf(*current, rules.now));
  std::vector<DriveAnswers> kept;
  std::ranges::reverse(earlier);
  for (DriveAnswers& each : earlier) {
    if (taken.insert(SlotOf(*each.date, rules.now)).second) kept.push_back(std::move(each));
  }
  std::ranges::reverse(kept);
  return kept;
}

std::optional<sys_seconds> DateOf(const Entry& device) {
  const auto earlier = Earlier(device.drive());
  return earlier ? earlier->date : std::nullopt;
}

void TakeEarlier(Entry& device, const Entry& before, const HistoryRules& rules) {
  std::vector<DriveAnswers> earlier = before.earlier;
  if (auto last = Earlier(before.drive())) earlier.push_back(std::move(*last));
  device.earlier = Thinned(std::move(earlier), DateOf(device), rules);
}

// The entry of a drive that is gone, whatever it was before. nullopt once it is forgotten.
std::optional<Entry> MakeGone(const Entry& before, const HistoryRules& rules) {
  Entry gone = before;
  gone.name = gone.className = machines::kOtherDiskClass;
  if (!gone.goneSince) gone.goneSince = rules.now;
  if (rules.now - *gone.goneSince > kMonth) return std::nullopt;
  gone.earlier = Thinned(before.earlier, DateOf(before), rules);
  return gone;
}

}  // namespace

void AddHistory(platform::Machine& machine, const platform::Machine& before,
                const HistoryRules& rules) {
  const bool isMasked = rules.areSerialsMasked || IsMasked(before.roots);
  Drives<Entry> now;
  Collect(machine.roots, isMasked, now);
  Drives<const Entry> then;
  Collect(before.roots, isMasked, then);
  std::vector<Entry> gone;
  for (const auto& [key, device] : then) {
    if (!device) continue;
    const auto found = now.find(key);
    if (found == now.end()) {
      if (auto entry = MakeGone(*device, rules)) gone.push_back(std::move(*entry));
    } else if (found->second) {
      TakeEarlier(*found->second, *device, rules);
    }
  }
  auto& children = machine.roots.front().children;
  children.insert(children.end(), gone.begin(), gone.end());
}

}  // namespace tools
