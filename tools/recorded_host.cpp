#include "tools/recorded_host.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/byte_count.h"
#include "base/printable_text.h"
#include "drives/ages.h"
#include "drives/attribute_blocks.h"
#include "drives/identify_data.h"
#include "drives/nvme_logs.h"
#include "drives/report_lines.h"
#include "drives/scsi_logs.h"
#include "drives/self_tests.h"
#include "drives/statistics.h"
#include "machines/entries/device_entries.h"
#include "machines/entries/drive_logs.h"
#include "tools/replay.h"

namespace tools {
namespace {

using drives::Host;
using machines::Characteristic;
using machines::DiskName;
using platform::Entry;

// The forms of so many drives still fit into memory. No host has as many.
constexpr std::size_t kMaxDisks = 4096;

// The disks of a machine, by what the probe looks for.
struct Disks {
  std::vector<const Entry*> ata = {}, ahci = {}, others = {};
};

bool IsATA(const Entry& entry) { return entry.name == machines::kATADeviceName; }
bool IsAHCI(const Entry& entry) { return entry.className == machines::kAHCIDeviceClass; }

void Collect(const std::vector<Entry>& entries, Disks& disks) {
  for (const Entry& entry : entries) {
    if (IsATA(entry)) disks.ata.push_back(&entry);
    if (IsAHCI(entry) && !IsATA(entry)) disks.ahci.push_back(&entry);
    if (entry.className == machines::kOtherDiskClass) disks.others.push_back(&entry);
    Collect(entry.children, disks);
  }
}

Disks DisksOf(const platform::Machine& machine) {
  Disks disks;
  Collect(machine.roots, disks);
  if (disks.ata.size() + disks.ahci.size() + disks.others.size() > kMaxDisks) {
    throw std::runtime_error("the recording has more than " + std::to_string(kMaxDisks) + " disks");
  }
  return disks;
}

// Any text may stand in a registry, but no name is longer.
std::string Name(std::string_view text) {
  constexpr std::size_t kMaxCharacters = 255;
  return base::Shortened(text, kMaxCharacters);
}

std::span<const std::uint8_t> LogOf(const platform::DriveAnswers& answers, std::string_view name) {
  const auto found = answers.logs.find(name);
  return found == answers.logs.end() ? std::span<const std::uint8_t>() : std::span(found->second);
}

// Adds the self-tests in that log, which one of the functions in drives/self_tests.h reads.
template <typename Parse>
void AddSelfTests(drives::RecordedFacts& facts, const platform::DriveAnswers& answers,
                  std::string_view log, Parse parse) {
  if (!answers.logs.contains(log)) return;
  const auto tests = parse(LogOf(answers, log));
  facts.hasBadSelfTestLog = !tests;
  if (tests) facts.selfTests = *tests;
}

void AddAnswers(drives::Drive& drive, const Entry& device) {
  drive.recorded.emplace().capacity = machines::MediumSize(device);
  if (!device.drive) return;
  const platform::DriveAnswers answers = device.drive();
  const auto identify = answers.identify.Block();
  if (identify) drives::AddIdentify(*drive.recorded, *identify);
  if (const auto data = answers.data.Block()) drives::AddData(drive, *data);
  AddSelfTests(*drive.recorded, answers, machines::kSelfTestLog, drives::ParseATASelfTests);
  AddStatistics(drive, LogOf(answers, machines::kStatistics),
                drives::LogicalSectorSize(identify.value_or(base::Block{})));
  drive.recorded->date = answers.date;
  drive.recorded->hasCondition = answers.exceeded.has_value();
}

// As the report of the drive would name it; what its IDENTIFY DEVICE data do not tell, the kernel
// may.
drives::UnreadDrive MakeUnread(std::string path, const Entry& device) {
  platform::DriveAnswers answers;
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

// Adds the device by its lines in the report. If its names hold line feeds, they break these lines:
// the device then counts among those that could not be read.
void AddDevice(Host& host, const Entry& device) {
  const std::string lines = ReplayDevice(device);
  if (lines.empty()) {
    host.recorded->withoutSMART.push_back(Name(DiskName(device)));
    return;
  }
  Host own = drives::ParseReport(lines);
  const std::size_t expected = IsATA(device) && IsAHCI(device) ? 2 : 1;  // of each kind once
  if (own.damage || own.drives.size() + own.notRead.size() != expected) {
    host.notRead.push_back(MakeUnread(Name(DiskName(device)), device));
    host.notRead.back().why = "a line feed in its names breaks its lines in the report";
    return;
  }
  for (drives::UnreadDrive& drive : own.notRead) {
    host.notRead.push_back(MakeUnread(std::move(drive.device), device));
  }
  for (drives::Drive& drive : own.drives) {
    AddAnswers(drive, device);
    host.drives.push_back(std::move(drive));
  }
}

// Adds what the drive's logs say. Returns why they say nothing, in words, or an empty text.
std::string AddLogs(drives::Drive& drive, const platform::DriveAnswers& answers) {
  const auto log = [&](std::string_view name) { return LogOf(answers, name); };
  drive.recorded->date = answers.date;
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
  AddSense(drive, log(machines::kSense));
  AddDefectList(drive, log(machines::kDefectListHeader));
  drive.recorded->hasCondition = drive.recorded->exception.has_value();
  return "";
}

// Adds an NVMe drive or a SCSI disk, which is in no report.
void AddOther(Host& host, const Entry& disk) {
  if (!disk.drive) {
    host.recorded->notAsked.push_back(Name(DiskName(disk)));
    return;
  }
  const platform::DriveAnswers answers = disk.drive();
  std::string path = std::string(drives::kLocalFolder) + Name(DiskName(disk));
  drives::UnreadDrive unread = MakeUnread(path, disk);
  unread.localPath = path;
  drives::Drive drive;
  drive.device = drive.localPath = std::move(path);
  drive.product = unread.product;
  drive.revision = Name(Characteristic(disk, machines::kRevisionKey));
  drive.serial = unread.serial;
  drive.recorded.emplace().capacity = machines::MediumSize(disk);
  if (const auto capacity = drive.recorded->capacity) {
    drive.capacity = base::ByteCountText(static_cast<double>(*capacity));
  }
  if (unread.why.empty()) unread.why = AddLogs(drive, answers);
  if (unread.why.empty()) {
    host.drives.push_back(std::move(drive));
  } else {
    host.notRead.push_back(std::move(unread));
  }
}

// Adds what the first root says of the host, and gives whether that runs Linux.
bool AddOrigin(drives::RecordedHost& host, const platform::Machine& machine) {
  if (machine.roots.empty()) return false;
  const auto* origin = platform::FindValue<platform::Dictionary>(machine.roots.front().properties,
                                                                 machines::kHostKey);
  if (!origin) return false;
  const std::string* name = platform::FindText(*origin, machines::kHostNameKey);
  if (name) host.name = Name(*name);
  const auto* date = platform::FindValue<std::chrono::sys_seconds>(*origin, machines::kHostDateKey);
  if (date) host.date = *date;
  const std::string* system = platform::FindText(*origin, machines::kHostSystemKey);
  return system && *system == machines::kLinux;
}

// Linux has other paths, and names its disks sda to sdz, then sdaa.
template <typename AnyDrive>
void UseLinuxPaths(std::vector<AnyDrive>& devices) {
  for (AnyDrive& drive : devices) {
    const std::string_view disk = drives::DiskOf(std::string_view(drive.device));
    if (!disk.empty()) drive.localPath = std::string(drives::kLocalFolder).append(disk);
  }
  std::ranges::stable_sort(devices, machines::IsNamedBefore, [](const AnyDrive& drive) {
    return std::string_view(drive.localPath.empty() ? drive.device : drive.localPath);
  });
}

}  // namespace

Host ReadRecordedHost(platform::Machine machine, std::chrono::sys_seconds now) {
  platform::SetMachine(std::move(machine));
  const Disks disks = DisksOf(platform::ThisMachine());
  Host host;
  drives::RecordedHost& recorded = host.recorded.emplace();
  for (const Entry* device : disks.ata) AddDevice(host, *device);
  for (const Entry* device : disks.ahci) AddDevice(host, *device);
  for (const Entry* disk : disks.others) AddOther(host, *disk);
  if (AddOrigin(recorded, platform::ThisMachine())) {
    UseLinuxPaths(host.drives);
    UseLinuxPaths(host.notRead);
  }
  drives::AddAges(host, now);
  return host;
}

}  // namespace tools
