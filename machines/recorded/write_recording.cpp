#include "machines/recorded/recording.h"

#include <optional>
#include <string_view>
#include <utility>

#include "machines/recorded/recording_format.h"

namespace machines {
namespace {

using platform::Array;
using platform::Dictionary;
using platform::Drive;
using platform::Entry;

void Put(Dictionary& dictionary, std::string_view key, platform::Property value) {
  dictionary.push_back({std::string(key), std::move(value)});
}

void PutBlock(DriveRecording& recording, std::string_view key, const char* command,
              const std::optional<Drive::Block>& block) {
  if (block) {
    Put(recording.answers, key, {platform::Data(block->begin(), block->end())});
  } else {
    recording.failures.push_back(std::string(command) + " failed");
  }
}

void RecordAnswers(Drive& drive, DriveRecording& recording) {
  if (const std::optional<bool> exceeded = drive.ReturnStatus()) {
    Put(recording.answers, kExceededKey, {*exceeded});
  } else {
    recording.failures.emplace_back("SMART RETURN STATUS failed");
  }
  PutBlock(recording, kDataKey, "SMART READ DATA", drive.ReadData());
  PutBlock(recording, kThresholdsKey, "SMART READ THRESHOLDS", drive.ReadThresholds());
  PutBlock(recording, kIdentifyKey, "IDENTIFY DEVICE", drive.Identify());
}

Dictionary ListEntry(const Entry& entry, const DriveRecorder& record) {
  Dictionary listed;
  if (!entry.name.empty()) Put(listed, kNameKey, {entry.name});
  if (!entry.className.empty()) Put(listed, kClassKey, {entry.className});
  listed.insert(listed.end(), entry.properties.begin(), entry.properties.end());
  if (entry.drive) Put(listed, kDriveKey, {record(entry)});
  if (entry.children.empty()) return listed;
  Array children;
  for (const Entry& child : entry.children) children.push_back({ListEntry(child, record)});
  Put(listed, kChildrenKey, {std::move(children)});
  return listed;
}

// 0x1068 is 10.6.8.
std::string ProductVersion(SInt32 systemVersion) {
  const auto digit = [systemVersion](int shift) { return (systemVersion >> shift) & 0xF; };
  return std::to_string(digit(12) * 10 + digit(8)) + "." + std::to_string(digit(4)) + "." +
         std::to_string(digit(0));
}

}  // namespace

DriveRecording RecordDrive(Drive& drive) {
  DriveRecording recording;
  const bool isOpen = drive.Open();
  const bool isEnabled = isOpen && drive.Enable(true);
  RecordAnswers(drive, recording);
  if (!isOpen) {
    Put(recording.answers, kQueryFailsKey, {true});
    recording.failures = {drive.OpenFailure()};
  } else if (!isEnabled) {
    Put(recording.answers, kEnableFailsKey, {true});
    recording.failures = {"S.M.A.R.T. cannot be enabled"};
  }
  return recording;
}

platform::Property ListingOf(const platform::Machine& machine, const DriveRecorder& record) {
  Array roots;
  for (const Entry& root : machine.roots) roots.push_back({ListEntry(root, record)});
  if (roots.empty()) roots.push_back({Dictionary()});
  auto& first = std::get<Dictionary>(roots.front().value);
  first.insert(first.begin(), {std::string(kVersionKey), {ProductVersion(machine.systemVersion)}});
  if (roots.size() == 1) return std::move(roots.front());
  return {std::move(roots)};
}

}  // namespace machines
