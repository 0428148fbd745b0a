// Which of the host's block devices are ATA disks. What a disk is like is found out by
// sysfs_machine.cpp.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace machines {

struct AtaDisk {
  std::string name;              // the kernel's: sda
  std::filesystem::path folder;  // its folder in sysfs
  std::string port;              // the ATA port that it is attached to: ata1
  std::string hostDriver;        // the kernel's driver of that port; empty: not known
};

// All of them in the kernel's order of naming: sda to sdz, then sdaa. `sysfs` is the
// root of the kernel's description of the system, usually /sys. A disk whose folder cannot
// be read is left out; none is found where `sysfs` itself cannot be.
std::vector<AtaDisk> FindAtaDisks(const std::filesystem::path& sysfs);

}  // namespace machines
