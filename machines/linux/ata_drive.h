// A drive of this host: S.M.A.R.T. operations as ATA commands that go to its device node.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <optional>

#include "platform/machine.h"

namespace machines {

// `number` is the number of the block device that `node` must be; without it the drive
// cannot be opened. The drive's Open asks for everything, each command once, in the order
// IDENTIFY DEVICE, ENABLE OPERATIONS, RETURN STATUS, READ DATA, READ THRESHOLDS, and closes
// the node again; after a failure nothing more is sent. It succeeds where the drive tells
// its condition and its data; also where it says that it has no S.M.A.R.T., but that drive is asked
// nothing more and cannot be enabled. One that refuses only READ THRESHOLDS has no thresholds. A
// block of zeros is an adapter's that has not asked the drive: IDENTIFY DEVICE or READ DATA has
// failed then.
//
// The other operations send nothing: they give what the last Open was told, so that the
// report waits for a drive in Open alone, for five commands at most. To disable always fails:
// the probe never asks for it.
std::shared_ptr<platform::Drive> MakeAtaDrive(std::filesystem::path node,
                                              std::optional<dev_t> number);

}  // namespace machines
