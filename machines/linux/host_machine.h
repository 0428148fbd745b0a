// The machine that this program runs on: its disks as registry entries, with what they answer.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "machines/linux/ata_drive.h"
#include "machines/linux/drive_processes.h"
#include "machines/linux/host_disks.h"
#include "platform/machine.h"

namespace machines {

// How the drives are asked.
struct Asking {
  std::chrono::milliseconds limit = kAnswerLimit;  // a drive without answers by then is given up
  // Called on the way: how many drives are asked, and the names of those that are still awaited.
  std::function<void(std::size_t drives, const std::vector<std::string>& awaited)> progress = {};
  KeptAnswers kept = {};  // of drives that sleep
  // Asks for more than a report shows: NVMe drives, SCSI disks, and the logs of ATA drives. A disk
  // behind USB, or that only udev calls an ATA disk, is not asked for its logs.
  bool beyondReport = false;
};

// Asks the disks that speak ATA, and others where that is wanted, in parallel, each in a process of
// its own that opens the disk's node in `dev`. It does not ask a disk that says that it lacks
// S.M.A.R.T., unless that is an AHCI disk. An NVMe drive with several namespaces is asked once. If
// answers are kept, a disk that the kernel has suspended gives them, and its node is not opened.
//
// Returns the machine of all disks in their order. Each disk is an entry, with an entry for its
// medium below. A disk that is not asked, or has nothing to say, has no drive. A disk that does not
// speak ATA is of kOtherDiskClass. If sysfs does not have a size, it is left out; if it does not
// have a model, that is empty; if it does not say whether there is S.M.A.R.T., it is taken to be
// supported. The machine of a host without disks is only a root.
platform::Machine AskDisks(const std::vector<Disk>& disks, const std::filesystem::path& dev,
                           const Asking& asking = {});

}  // namespace machines
