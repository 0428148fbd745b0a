// What has changed between two recordings or reports of a host: for the mail, and for a repair
// shop.
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "drives/history.h"
#include "health/health.h"
#include "health/signs.h"
#include "views/field_texts.h"
#include "views/views.h"

namespace views {
namespace {

using drives::Drive;
using drives::Host;
using drives::LossCount;
using health::Grade;

// What is known of a drive: its facts, or why it could not be read.
struct Known {
  std::string name;
  const Drive* drive = nullptr;  // null: it could not be read
  std::string why = {};
};

// By product and serial number, and of those that share these by their order.
using Drives = std::map<std::pair<std::string, int>, Known>;

template <typename AnyDrive>
std::string NameOf(const AnyDrive& drive) {
  const std::string product = FieldText(drive.product);
  const std::string serial = FieldText(drive.serial);
  const bool hasBoth = !product.empty() && !serial.empty();
  const std::string name = fmt::format("{}{}{}", product, hasBoth ? " " : "", serial);
  return name.empty() ? PathText(drive) : name;
}

Drives DrivesOf(const Host& host) {
  Drives drives;
  std::map<std::string, int> counts;
  const auto add = [&](Known known) {
    const int number = counts[known.name]++;
    drives.emplace(std::pair(known.name, number), std::move(known));
  };
  for (const Drive& drive : host.drives) add({NameOf(drive), &drive});
  for (const drives::UnreadDrive& drive : host.notRead) {
    add({NameOf(drive), nullptr, FieldText(drive.why)});
  }
  return drives;
}

struct Change {
  Grade grade;  // the worst comes first
  std::string text;
};
using Changes = std::vector<Change>;

Change MakeChange(Grade grade, std::string_view what, const Known& known,
                  std::string_view details) {
  return {grade, fmt::format("{}: {}{}{}", what, known.name, details.empty() ? "" : ": ", details)};
}

// "9 sectors reallocated" or "1 media error"
std::string LossText(const LossCount& loss) {
  const std::string_view s = *loss.count == 1 ? "" : "s";
  return loss.ofSectors ? fmt::format("{} sector{} {}", *loss.count, s, loss.name)
                        : fmt::format("{} {} error{}", *loss.count, loss.name, s);
}

// "9 sectors reallocated, before 7" for each count that grew.
std::vector<std::string> GrownCounts(const Drive& before, const Drive& now) {
  std::vector<std::string> texts;
  if (!before.recorded || !now.recorded) return texts;
  const auto add = [&](const LossCount& loss, const LossCount& old) {
    const bool areKnown = loss.count && old.count && drives::IsSameSource(loss, old);
    if (!areKnown || *loss.count <= *old.count) return;
    texts.push_back(fmt::format("{}, before {}", LossText(loss), *old.count));
  };
  for (const LossCount& loss : now.recorded->losses) {
    for (const LossCount& old : before.recorded->losses) add(loss, old);
  }
  const auto& crc = now.recorded->crcErrors;
  const auto& oldCRC = before.recorded->crcErrors;
  if (crc && oldCRC) add(*crc, *oldCRC);
  return texts;
}

// What the reasons that make a grade are about, without the numbers in them. Counts are left out.
std::set<std::string> Topics(const health::Health& health) {
  std::set<std::string> topics;
  for (const health::Reason& reason : health.reasons) {
    if (reason.isOfCount || reason.grade == Grade::kGood) continue;
    std::string topic = reason.text;
    std::erase_if(topic, [](char c) { return c >= '0' && c <= '9'; });
    topics.insert(topic);
  }
  return topics;
}

void AddDifferences(Changes& changes, const Known& before, const Known& now) {
  const health::Health old = health::HealthOf(*before.drive);
  const health::Health health = health::HealthOf(*now.drive);
  const bool hasMore = !std::ranges::includes(Topics(old), Topics(health));
  const bool isWorse = health.grade > old.grade || (health.grade == old.grade && hasMore);
  const std::string details =
      fmt::format("{} (before: {})", HealthText(health), RowOf(old.grade).word);
  if (isWorse) changes.push_back(MakeChange(health.grade, "worse", now, details));
  const bool isStillWarm = old.grade == Grade::kHot && health::IsNearLimit(*now.drive);
  if (health.grade < old.grade && !isStillWarm) {
    changes.push_back(MakeChange(health.grade, "better", now, details));
  }
  for (const std::string& text : GrownCounts(*before.drive, *now.drive)) {
    changes.push_back(MakeChange(std::max(health.grade, Grade::kCaution), "grew", now, text));
  }
}

void AddChange(Changes& changes, const Known& before, const Known& now) {
  if (before.drive && now.drive) {
    AddDifferences(changes, before, now);
  } else if (before.drive) {
    changes.push_back(MakeChange(Grade::kNotRead, "no longer readable", now, now.why));
  } else if (now.drive) {
    const health::Health health = health::HealthOf(*now.drive);
    changes.push_back(MakeChange(health.grade, "readable again", now, HealthText(health)));
  }
}

bool IsGone(const Host& host, const std::string& name) {
  return std::ranges::any_of(
      host.gone, [&](const drives::GoneDrive& gone) { return NameOf(gone.names) == name; });
}

// One that was gone before is back.
void AddNew(Changes& changes, const Known& now, const Host& before) {
  const bool isBack = IsGone(before, now.name);
  if (!now.drive) {
    changes.push_back(MakeChange(Grade::kNotRead, "new, and not readable", now, now.why));
    return;
  }
  const health::Health health = health::HealthOf(*now.drive);
  changes.push_back(MakeChange(health.grade, isBack ? "back" : "new", now, HealthText(health)));
}

// What it said last counts: before that it may have been well.
void AddGone(Changes& changes, const Known& before, const Host& now) {
  const auto last = std::ranges::find_if(
      now.gone, [&](const drives::GoneDrive& gone) { return NameOf(gone.names) == before.name; });
  if (last != now.gone.end()) {
    changes.push_back({health::GradeOf(*last), GoneText(*last)});
    return;
  }
  std::string details = "it was not readable";
  Grade grade = Grade::kGone;
  if (before.drive) {
    const health::Health health = health::HealthOf(*before.drive);
    details = "before: " + HealthText(health);
    if (health.grade == Grade::kFailing) grade = Grade::kFailing;
  }
  changes.push_back(MakeChange(grade, "gone", before, details));
}

}  // namespace

std::string ChangesText(const Host& before, const Host& now) {
  const Drives old = DrivesOf(before);
  const Drives current = DrivesOf(now);
  Changes changes;
  for (const auto& [key, known] : old) {
    const auto found = current.find(key);
    found == current.end() ? AddGone(changes, known, now)
                           : AddChange(changes, known, found->second);
  }
  for (const auto& [key, known] : current) {
    if (!old.contains(key)) AddNew(changes, known, before);
  }
  for (const drives::GoneDrive& gone : now.gone) {
    const std::string name = NameOf(gone.names);
    if (old.contains({name, 0}) || IsGone(before, name)) continue;
    changes.push_back({health::GradeOf(gone), GoneText(gone)});
  }
  std::ranges::stable_sort(changes, std::ranges::greater(), &Change::grade);
  std::string text;
  for (const Change& change : changes) text.append(change.text).append("\n");
  return text;
}

}  // namespace views
