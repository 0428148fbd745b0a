// The machine that this program runs on, as the kernel describes it in sysfs. No device
// is opened for it.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "machines/linux/ata_drive.h"
#include "machines/linux/drive_processes.h"
#include "platform/machine.h"

namespace machines {

// How the drives are asked, when the first answers are wanted.
struct Asking {
  std::chrono::milliseconds limit = kAnswerLimit;  // what has not answered then is given up
  // Told on the way: how many drives are asked, and the names of those that are still awaited.
  std::function<void(std::size_t drives, const std::vector<std::string>& awaited)> progress = {};
  KeptAnswers kept = {};
};

// The host's disks, each above an entry of its medium, in the kernel's order of naming. Those that
// speak ATA have drives, which open the disks' nodes in `dev`. All are asked at once, each in a
// process of its own, when one is asked for the first time, and never again. That is later than
// here, unless a disk's model is known to nobody else. Other disks have no drive and are of
// kOtherDiskClass; what has no hardware of its own, such as a loop device, and optical and floppy
// drives are no entries. Of what `sysfs` does not tell, a size is left out, a model is empty, and
// S.M.A.R.T. is taken to be supported. A host without disks is a root alone; a disk that goes away
// meanwhile is left out. Throws std::system_error where the disks in `sysfs` cannot be listed, and
// std::bad_alloc. Wakes no drive: the kernel, and udev, keep what is read here.
platform::Machine ReadLinuxMachine(const std::filesystem::path& sysfs = "/sys",
                                   const std::filesystem::path& dev = "/dev",
                                   const Asking& asking = {});

}  // namespace machines
