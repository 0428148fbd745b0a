#include "machines/recorded/write_recording.h"

#include <string_view>
#include <utility>

#include "machines/recorded/property_list.h"
#include "machines/recorded/recording_format.h"

namespace machines {
namespace {

using platform::Array;
using platform::BlockAnswer;
using platform::Dictionary;
using platform::Entry;

template <typename Value>
void Put(Dictionary& dictionary, std::string_view key, Value value) {
  dictionary[std::string(key)].value = std::move(value);
}

// If a failed read has left something of a block, both the bytes and the failure are recorded.
void PutBlock(Dictionary& recorded, std::string_view key, std::string_view failsKey,
              const BlockAnswer& block) {
  if (block.succeeds || !block.bytes.empty()) Put(recorded, key, block.bytes);
  if (!block.succeeds && !block.bytes.empty()) Put(recorded, failsKey, true);
}

// Adds what the drive answered before, and since when it is gone.
Dictionary WithHistory(Dictionary recorded, const Entry& entry) {
  Array earlier;
  for (const platform::DriveAnswers& answers : entry.earlier) {
    earlier.emplace_back().value = RecordDrive(answers);
  }
  if (!earlier.empty()) Put(recorded, kEarlierKey, std::move(earlier));
  if (entry.goneSince) Put(recorded, kGoneKey, true);
  const bool hasDate = entry.goneSince && IsWritableDate(*entry.goneSince);
  if (hasDate) Put(recorded, kGoneSinceKey, *entry.goneSince);
  return recorded;
}

Dictionary ListEntry(const Entry& entry, const DriveRecorder& record) {
  Dictionary listed;
  if (!entry.name.empty()) Put(listed, kNameKey, entry.name);
  if (!entry.className.empty()) Put(listed, kClassKey, entry.className);
  listed.insert(entry.properties.begin(), entry.properties.end());
  if (entry.drive) Put(listed, kDriveKey, WithHistory(record(entry), entry));
  if (entry.children.empty()) return listed;
  Array children;
  for (const Entry& child : entry.children)
    children.emplace_back().value = ListEntry(child, record);
  Put(listed, kChildrenKey, std::move(children));
  return listed;
}

// 0x1068 is 10.6.8.
std::string ProductVersion(SInt32 systemVersion) {
  const auto digit = [systemVersion](int shift) { return (systemVersion >> shift) & 0xF; };
  return std::to_string(digit(12) * 10 + digit(8)) + "." + std::to_string(digit(4)) + "." +
         std::to_string(digit(0));
}

}  // namespace

Dictionary RecordDrive(const platform::DriveAnswers& answers) {
  Dictionary recorded;
  if (!answers.whyNotOpened.empty()) {
    Put(recorded, kQueryFailsKey, true);
    Put(recorded, kWhyKey, answers.whyNotOpened);
  }
  if (!answers.enables) Put(recorded, kEnableFailsKey, true);
  if (answers.exceeded) Put(recorded, kExceededKey, *answers.exceeded);
  PutBlock(recorded, kDataKey, kDataFailsKey, answers.data);
  PutBlock(recorded, kThresholdsKey, kThresholdsFailsKey, answers.thresholds);
  if (answers.identify.succeeds) Put(recorded, kIdentifyKey, answers.identify.bytes);
  // A clock may be wrong, so that the date cannot be written.
  if (answers.date && IsWritableDate(*answers.date)) Put(recorded, kDateKey, *answers.date);
  for (const auto& [name, bytes] : answers.logs) Put(recorded, name, bytes);
  if (!answers.whyNoLogs.empty()) Put(recorded, kWhyNoLogsKey, answers.whyNoLogs);
  return recorded;
}

// Missing thresholds are no failure: a drive may refuse to send any.
std::vector<std::string> FailuresOf(const platform::DriveAnswers& answers) {
  if (!answers.whyNotOpened.empty()) return {answers.whyNotOpened};
  if (!answers.enables) return {"S.M.A.R.T. cannot be enabled"};
  std::vector<std::string> failures;
  if (!answers.exceeded) failures.emplace_back("SMART RETURN STATUS failed");
  if (!answers.data.succeeds) failures.emplace_back("SMART READ DATA failed");
  if (!answers.identify.succeeds) failures.emplace_back("IDENTIFY DEVICE failed");
  return failures;
}

platform::Property ListingOf(const platform::Machine& machine, const DriveRecorder& record) {
  Array roots;
  for (const Entry& root : machine.roots) roots.emplace_back().value = ListEntry(root, record);
  if (roots.empty()) roots.emplace_back().value = Dictionary();
  auto& first = std::get<Dictionary>(roots.front().value);
  Put(first, kVersionKey, ProductVersion(machine.systemVersion));
  if (roots.size() == 1) return std::move(roots.front());
  return {std::move(roots)};
}

}  // namespace machines
