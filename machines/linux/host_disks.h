// The host's disks as the kernel describes them in sysfs. No device is opened, so no disk wakes.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "base/block.h"

namespace machines {

// Where the kernel shows its devices, and where their nodes lie.
inline constexpr const char* kSysfs = "/sys";
inline constexpr const char* kDev = "/dev";

enum class DiskKind { kAHCI, kATA, kNVMe, kSCSI, kOther };

struct Disk {
  std::string name;              // the kernel's: sda
  std::filesystem::path folder;  // its folder in sysfs
  DiskKind kind = DiskKind::kOther;
  std::optional<base::Block> identify = {};  // of an ATA disk, if the kernel keeps the data
  bool isModelKnown = true;                  // false: the kernel only knows the model of a bridge
  bool isOnUSB = false;                      // of a SCSI or ATA disk
  std::filesystem::path drive = {};          // the folder of an NVMe disk's controller in sysfs
};

// Whether an ATA disk may be asked for its logs: some bridges reset when they are sent such a
// command.
inline bool HasLogs(const Disk& disk) { return disk.isModelKnown && !disk.isOnUSB; }

// The capabilities that the kernel wants for the commands that such a disk is asked with.
std::vector<int> CapabilitiesFor(const Disk& disk);

// The disks in the kernel's order of naming: sda to sdz, then sdaa. Devices without hardware of
// their own, such as loop devices, are left out, and so are optical and floppy drives. A disk that
// goes away meanwhile is left out too. Throws std::system_error if the disks in `sysfs` cannot be
// listed, and std::bad_alloc.
std::vector<Disk> ListDisks(const std::filesystem::path& sysfs);

}  // namespace machines
