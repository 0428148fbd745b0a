// A drive of this host: what it answers to the ATA commands that go to its device node.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <optional>

#include "platform/machine.h"

namespace machines {

// What is still good of the answers of a drive with these IDENTIFY DEVICE data; nullopt if there is
// nothing. Empty: nothing is kept of any drive.
using KeptAnswers = std::function<std::optional<platform::DriveAnswers>(const base::Block&)>;

struct AtaNode {
  std::filesystem::path path;
  std::optional<dev_t> number;  // of the block device that `path` must be; without it, it is not
                                // opened
  std::optional<base::Block> identify = {};  // as far as the kernel keeps it
};

// The drive opens its node, asks for everything, each command once, in the order IDENTIFY DEVICE,
// ENABLE OPERATIONS, RETURN STATUS, READ DATA, READ THRESHOLDS, and closes the node again; after a
// failure nothing more is sent. It is opened where it tells its condition and its data; also where
// it says that it has no S.M.A.R.T., but then it is asked nothing more and cannot be enabled. One
// that refuses only READ THRESHOLDS has no thresholds. A block of zeros is an adapter's that has
// not asked the drive: IDENTIFY DEVICE or READ DATA has failed then.
//
// Where answers are kept, CHECK POWER MODE is sent first. A drive in standby then gives those that
// are kept of it, and is sent nothing that wakes it: IDENTIFY DEVICE, unless the node has its data.
// One of which nothing is kept is asked as any other.
platform::Drive MakeAtaDrive(AtaNode node, KeptAnswers kept = {});

}  // namespace machines
