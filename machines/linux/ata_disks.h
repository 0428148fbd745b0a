// Which of the host's block devices are ATA disks, and how they are attached. What a disk is
// like is found out by sysfs_machine.cpp.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/machine.h"

namespace machines {

struct AtaDisk {
  std::string name;              // the kernel's: sda
  std::filesystem::path folder;  // its folder in sysfs
  std::string port;  // what it is attached to: a libata port, ata1, or a SCSI host, host6
  bool isOnAtaPort = false;
  bool isOnUSB = false;
  std::string hostDriver;  // the kernel's driver of the port or host; empty: not known
  std::optional<platform::Drive::Block> identify;  // as far as the kernel keeps it
};

// The SCSI disks that speak ATA, directly or behind a translation layer: those that the
// kernel says are of the vendor "ATA", as libata and most layers do, and those whose layer
// hands out IDENTIFY DEVICE data. In the kernel's order of naming: sda to sdz, then sdaa.
// `sysfs` is the root of the kernel's description of the system, usually /sys. A disk whose
// folder cannot be read is left out; none is found where `sysfs` itself cannot be.
std::vector<AtaDisk> FindAtaDisks(const std::filesystem::path& sysfs);

}  // namespace machines
