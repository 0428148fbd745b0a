// A drive of this host: what it answers to the ATA commands that go to its device node.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>

#include "platform/machine.h"

namespace machines {

// `number` is the number of the block device that `node` must be; without it the drive
// cannot be opened. The drive opens the node, asks for everything, each command once, in the order
// IDENTIFY DEVICE, ENABLE OPERATIONS, RETURN STATUS, READ DATA, READ THRESHOLDS, and closes
// the node again; after a failure nothing more is sent. It is opened where it tells its condition
// and its data; also where it says that it has no S.M.A.R.T., but then it is asked nothing more and
// cannot be enabled. One that refuses only READ THRESHOLDS has no thresholds. A block of zeros is
// an adapter's that has not asked the drive: IDENTIFY DEVICE or READ DATA has failed then.
platform::Drive MakeAtaDrive(std::filesystem::path node, std::optional<dev_t> number);

}  // namespace machines
