#include "tools/recorded_host.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/byte_count.h"
#include "drives/ages.h"
#include "drives/report_lines.h"
#include "machines/entries/device_entries.h"
#include "tools/recorded_drive.h"
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
  std::vector<const Entry*> ata = {}, ahci = {}, others = {}, gone = {};
};

bool IsATA(const Entry& entry) { return entry.name == machines::kATADeviceName; }
bool IsAHCI(const Entry& entry) { return entry.className == machines::kAHCIDeviceClass; }

void Collect(const std::vector<Entry>& entries, Disks& disks) {
  for (const Entry& entry : entries) {
    if (entry.goneSince) {
      disks.gone.push_back(&entry);
    } else if (IsATA(entry)) {
      disks.ata.push_back(&entry);
    } else if (IsAHCI(entry)) {
      disks.ahci.push_back(&entry);
    } else if (entry.className == machines::kOtherDiskClass) {
      disks.others.push_back(&entry);
    }
    Collect(entry.children, disks);
  }
}

Disks DisksOf(const platform::Machine& machine) {
  Disks disks;
  Collect(machine.roots, disks);
  if (disks.ata.size() + disks.ahci.size() + disks.others.size() + disks.gone.size() > kMaxDisks) {
    throw std::runtime_error("the recording has more than " + std::to_string(kMaxDisks) + " disks");
  }
  return disks;
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

// Adds an NVMe drive or a SCSI disk, which is in no report.
void AddOther(Host& host, const Entry& disk) {
  if (!disk.drive) {
    host.recorded->notAsked.push_back(Name(DiskName(disk)));
    return;
  }
  std::string path = std::string(drives::kLocalFolder) + Name(DiskName(disk));
  drives::UnreadDrive unread = MakeUnread(path, disk);
  unread.localPath = path;
  drives::Drive drive;
  drive.device = drive.localPath = std::move(path);
  drive.product = unread.product;
  drive.revision = Name(Characteristic(disk, machines::kRevisionKey));
  drive.serial = unread.serial;
  drive.protocol = ProtocolOf(disk);
  if (unread.why.empty()) unread.why = AddAnswers(drive, disk);
  if (!unread.why.empty()) {
    host.notRead.push_back(std::move(unread));
    return;
  }
  if (const auto capacity = drive.recorded->capacity) {
    drive.capacity = base::ByteCountText(static_cast<double>(*capacity));
  }
  host.drives.push_back(std::move(drive));
}

// Adds a device that is gone, with what it said last.
void AddGone(Host& host, const Entry& device) {
  Host last;
  last.recorded.emplace();
  IsAHCI(device) ? AddDevice(last, device) : AddOther(last, device);
  drives::GoneDrive gone{MakeUnread("", device), {}, *device.goneSince};
  if (!last.drives.empty()) gone.drive = std::move(last.drives.front());
  host.gone.push_back(std::move(gone));
}

// No pass matches the entry of a drive that is gone. That of an ATA drive is to be one again, so
// that the probe reads what its answers say.
void ReviveATA(std::vector<Entry>& entries) {
  for (Entry& entry : entries) {
    ReviveATA(entry.children);
    if (!entry.goneSince || !entry.drive) continue;
    const platform::DriveAnswers answers = entry.drive();
    const bool isATA = answers.identify.succeeds || answers.data.succeeds ||
                       answers.thresholds.succeeds || answers.exceeded || !answers.enables;
    if (isATA) entry.className = machines::kAHCIDeviceClass;
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
  ReviveATA(machine.roots);
  platform::SetMachine(std::move(machine));
  const Disks disks = DisksOf(platform::ThisMachine());
  Host host;
  drives::RecordedHost& recorded = host.recorded.emplace();
  for (const Entry* device : disks.ata) AddDevice(host, *device);
  for (const Entry* device : disks.ahci) AddDevice(host, *device);
  for (const Entry* disk : disks.others) AddOther(host, *disk);
  for (const Entry* device : disks.gone) AddGone(host, *device);
  if (AddOrigin(recorded, platform::ThisMachine())) {
    UseLinuxPaths(host.drives);
    UseLinuxPaths(host.notRead);
  }
  drives::AddAges(host, now);
  return host;
}

}  // namespace tools
