#include "machines/linux/host_disks.h"

#include <linux/capability.h>

#include <algorithm>
#include <string_view>
#include <system_error>
#include <utility>

#include "drives/identify_data.h"
#include "machines/entries/device_entries.h"
#include "machines/linux/sysfs_files.h"
#include "machines/linux/udev_database.h"

namespace machines {
namespace {

namespace fs = std::filesystem;

// Whether `name` is `prefix` with a number, as "ata12" is for "ata".
bool IsNumbered(std::string_view name, std::string_view prefix) {
  return name.size() > prefix.size() && name.starts_with(prefix) &&
         name.find_first_not_of("0123456789", prefix.size()) == std::string_view::npos;
}

// The folder of the SCSI host that a disk is attached to. The disk's own folder lies in it:
// .../ata1/host0/target0:0:0/... or .../usb2/2-1/2-1:1.0/host6/target6:0:0/... Empty if there is
// none.
fs::path HostOf(const fs::path& sysfs, fs::path folder) {
  while (folder != sysfs && folder.has_relative_path()) {
    if (IsNumbered(folder.filename().native(), "host")) return folder;
    folder = folder.parent_path();
  }
  return {};
}

// Whether the host is an AHCI port: a port of libata whose driver has "ahci" in its name.
bool IsAHCI(const fs::path& host) {
  if (!IsNumbered(host.parent_path().filename().native(), "ata")) return false;
  const std::string driver = ReadText(host / "scsi_host" / host.filename() / "proc_name");
  return driver.find("ahci") != std::string::npos;
}

// Whether a disk with an exchangeable medium has none, as an empty slot of a card reader.
bool HasNoMedium(const Disk& disk) {
  return ReadText(disk.folder / "removable") == "1" && ReadText(disk.folder / "size") == "0";
}

// "nvme0n1", a namespace of an NVMe drive.
bool IsNamespace(std::string_view name) {
  const std::size_t number = name.rfind('n');
  return number != std::string_view::npos && IsNumbered(name.substr(0, number), "nvme") &&
         IsNumbered(name.substr(number), "n");
}

// Finds out whether a SCSI disk speaks ATA, directly or behind a translation layer. It does if the
// kernel gives "ATA" as its vendor, as libata and most layers do, if its layer gives IDENTIFY
// DEVICE data, or if udev has asked it.
void ReadSCSIKind(const fs::path& sysfs, Disk& disk) {
  const fs::path host = HostOf(sysfs, disk.folder);
  const fs::path device = disk.folder / "device";
  const std::string type = ReadText(device / "type");
  // Direct access, or the same with zones that the host manages.
  if (host.empty() || (type != "0" && type != "20")) return;
  disk.kind = HasNoMedium(disk) ? DiskKind::kOther : DiskKind::kSCSI;
  disk.isOnUSB = std::ranges::any_of(
      disk.folder, [](const fs::path& part) { return IsNumbered(part.native(), "usb"); });
  if (const auto page = ReadFile(device / "vpd_pg89"))
    disk.identify = drives::FindIdentifyData(*page);
  if (!disk.identify && ReadText(device / "vendor") != "ATA") {
    const auto number = ReadDeviceNumber(disk.folder / "dev");
    if (!number || !IsATAByUdev(*number)) return;
    disk.isModelKnown = false;
  }
  disk.kind = IsAHCI(host) ? DiskKind::kAHCI : DiskKind::kATA;
}

void ReadKind(const fs::path& sysfs, Disk& disk) {
  if (!IsNamespace(disk.name)) return ReadSCSIKind(sysfs, disk);
  std::error_code error;
  disk.drive = fs::canonical(disk.folder / "device", error);
  if (!error) disk.kind = DiskKind::kNVMe;
}

// Whether the device counts as a disk. A disk has hardware of its own, and sysfs has a link to it.
// Optical drives, floppy drives, the boot code of a card and bare flash do not count, nor does one
// of several paths to a disk that has another name.
bool IsDisk(const std::string& name, const fs::path& folder) {
  constexpr const char* kOptical = "5";
  std::error_code error;
  return fs::exists(folder / "device", error) && ReadText(folder / "device" / "type") != kOptical &&
         !IsNumbered(name, "fd") && !IsNumbered(name, "sr") && !IsNumbered(name, "mtdblock") &&
         name.find("boot") == std::string::npos && ReadText(folder / "hidden") != "1";
}

std::optional<Disk> ReadDisk(const fs::path& sysfs, const fs::path& link) {
  std::error_code error;
  Disk disk{link.filename(), fs::canonical(link, error)};
  if (error || !IsDisk(disk.name, disk.folder)) return std::nullopt;
  ReadKind(sysfs, disk);
  return disk;
}

}  // namespace

// LOG SENSE and what else a SCSI disk is asked with are free to whoever may read its node.
std::vector<int> CapabilitiesFor(const Disk& disk) {
  switch (disk.kind) {
    case DiskKind::kAHCI:
    case DiskKind::kATA:
      return {CAP_SYS_RAWIO};
    case DiskKind::kNVMe:
      return {CAP_SYS_ADMIN};
    case DiskKind::kSCSI:
    case DiskKind::kOther:
      return {};
  }
  return {};
}

std::vector<Disk> ListDisks(const fs::path& sysfs) {
  std::vector<Disk> disks;
  std::error_code error;
  const fs::path root = fs::canonical(sysfs, error);
  fs::directory_iterator link(root / "block", error);
  for (; !error && link != fs::directory_iterator(); link.increment(error)) {
    if (std::optional<Disk> disk = ReadDisk(root, *link)) disks.push_back(std::move(*disk));
  }
  if (error) throw std::system_error(error, sysfs / "block");
  std::ranges::sort(disks, IsNamedBefore, &Disk::name);
  return disks;
}

}  // namespace machines
