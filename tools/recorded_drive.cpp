#include "tools/recorded_drive.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "base/printable_text.h"
#include "drives/attribute_blocks.h"
#include "drives/history.h"
#include "drives/identify_data.h"
#include "drives/nvme_logs.h"
#include "drives/scsi_logs.h"
#include "drives/self_tests.h"
#include "drives/statistics.h"
#include "machines/entries/device_entries.h"
#include "machines/entries/drive_logs.h"

namespace tools {
namespace {

using machines::Characteristic;
using platform::DriveAnswers;
using platform::Entry;

std::span<const std::uint8_t> LogOf(const DriveAnswers& answers, std::string_view name) {
  const auto found = answers.logs.find(name);
  return found == answers.logs.end() ? std::span<const std::uint8_t>() : std::span(found->second);
}

// Adds the self-tests in that log, which one of the functions in drives/self_tests.h reads.
template <typename Parse>
void AddSelfTests(drives::RecordedFacts& facts, const DriveAnswers& answers, std::string_view log,
                  Parse parse) {
  if (!answers.logs.contains(log)) return;
  const auto tests = parse(LogOf(answers, log));
  facts.hasBadSelfTestLog = !tests;
  if (tests) facts.selfTests = *tests;
}

void AddATAAnswers(drives::Drive& drive, const DriveAnswers& answers) {
  const auto identify = answers.identify.Block();
  if (identify) drives::AddIdentify(*drive.recorded, *identify);
  if (const auto data = answers.data.Block()) drives::AddData(drive, *data);
  AddSelfTests(*drive.recorded, answers, machines::kSelfTestLog, drives::ParseATASelfTests);
  AddStatistics(drive, LogOf(answers, machines::kStatistics),
                drives::LogicalSectorSize(identify.value_or(base::Block{})));
  drive.recorded->hasCondition = answers.exceeded.has_value();
}

std::string AddLogs(drives::Drive& drive, const DriveAnswers& answers) {
  const auto log = [&](std::string_view name) { return LogOf(answers, name); };
  if (answers.logs.contains(machines::kHealthLog)) {
    drive.protocol = drives::Protocol::kNVMe;
    if (!AddHealthLog(drive, log(machines::kHealthLog))) return "its health log is not whole";
    AddController(drive, log(machines::kIdentifyController));
    AddSelfTests(*drive.recorded, answers, machines::kSelfTestLog, drives::ParseNVMeSelfTests);
    const bool isTesting = drives::NVMeSelfTestPercent(log(machines::kSelfTestLog)).has_value();
    if (isTesting) drive.recorded->selfTest = drives::kATASelfTestRuns;
    return "";
  }
  drive.protocol = drives::Protocol::kSCSI;
  for (const machines::ScsiPage& page : machines::kScsiPages) AddLogPage(drive, log(page.name));
  AddSelfTests(*drive.recorded, answers, machines::kScsiSelfTests, drives::ParseSCSISelfTests);
  const auto& tests = drive.recorded->selfTests;
  const bool isTesting = !tests.empty() && tests.front().status == drives::kSelfTestRuns;
  if (isTesting) drive.recorded->selfTest = drives::kATASelfTestRuns;
  AddSense(drive, log(machines::kSense));
  AddDefectList(drive, log(machines::kDefectListHeader));
  drive.recorded->hasCondition = drive.recorded->exception.has_value();
  return "";
}

// Adds what the drive answered. Returns why that says nothing, in words, or an empty text.
std::string AddTo(drives::Drive& drive, const DriveAnswers& answers) {
  drive.recorded->date = answers.date;
  drive.recorded->whyNoLogs = Name(answers.whyNoLogs);
  if (drive.protocol != drives::Protocol::kATA) return AddLogs(drive, answers);
  AddATAAnswers(drive, answers);
  return "";
}

// What the drive said with earlier answers, which do not repeat what never changes.
drives::Moment MomentOf(const drives::Drive& drive, const DriveAnswers& now, DriveAnswers earlier) {
  earlier.identify = now.identify;
  drives::Drive then;
  then.product = drive.product;
  then.protocol = drive.protocol;
  then.recorded.emplace().capacity = drive.recorded->capacity;
  AddTo(then, earlier);
  return drives::MomentOf(*then.recorded);
}

}  // namespace

// Any text may stand in a registry, but no name is longer.
std::string Name(std::string_view text) {
  constexpr std::size_t kMaxCharacters = 255;
  return base::Shortened(text, kMaxCharacters);
}

drives::Protocol ProtocolOf(const Entry& device) {
  if (device.className != machines::kOtherDiskClass) return drives::Protocol::kATA;
  const bool isNVMe = device.drive && device.drive().logs.contains(machines::kHealthLog);
  return isNVMe ? drives::Protocol::kNVMe : drives::Protocol::kSCSI;
}

std::string AddAnswers(drives::Drive& drive, const Entry& device) {
  drive.recorded.emplace().capacity = machines::MediumSize(device);
  if (!device.drive) return "";
  const DriveAnswers answers = device.drive();
  std::string why = AddTo(drive, answers);
  if (!why.empty() || !answers.date) return why;
  std::vector<drives::Moment> earlier;
  for (const DriveAnswers& then : device.earlier) {
    earlier.push_back(MomentOf(drive, answers, then));
  }
  drives::AddHistory(*drive.recorded, std::move(earlier));
  return "";
}

drives::UnreadDrive MakeUnread(std::string path, const Entry& device) {
  DriveAnswers answers;
  if (device.drive) answers = device.drive();
  const std::optional<base::Block> identify = answers.identify.Block();
  drives::UnreadDrive drive{
      std::move(path), Name(Characteristic(device, machines::kProductNameKey)),
      Name(Characteristic(device, machines::kSerialNumberKey)), Name(answers.whyNotOpened)};
  if (!identify) return drive;
  if (drive.product.empty()) drive.product = drives::ModelNumber(*identify);
  const std::string serial = drives::SerialNumber(*identify);
  if (!serial.empty()) drive.serial = serial;
  return drive;
}

}  // namespace tools
