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
  std::chrono::milliseconds limit = kAnswerLimit;  // what has not answered then is given up
  // Told on the way: how many drives are asked, and the names of those that are still awaited.
  std::function<void(std::size_t drives, const std::vector<std::string>& awaited)> progress = {};
  KeptAnswers kept = {};
};

// Asks those of the disks that speak ATA and do not say that they lack S.M.A.R.T., all in parallel,
// each in a process of its own that opens the disk's node in `dev`. Gives the machine of all disks
// in their order, each an entry above one of its medium. Disks of other kinds have no drive and are
// of kOtherDiskClass. Of what sysfs does not tell, a size is left out, a model is empty, and
// S.M.A.R.T. is taken to be supported. A host without disks is a root alone.
platform::Machine AskDisks(const std::vector<Disk>& disks, const std::filesystem::path& dev,
                           const Asking& asking = {});

}  // namespace machines
