// A drive of this host: S.M.A.R.T. operations as ATA commands that go to its device node.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <optional>

#include "platform/machine.h"

namespace machines {

// `number` is the number of the block device that `node` must be; without it the drive
// cannot be opened. Nothing is opened before the drive's Open, which also sends IDENTIFY
// DEVICE: a drive that may not be sent commands or does not answer has no S.M.A.R.T.
// interface. After an Open that failed nothing is left open. One user client at a time.
std::shared_ptr<platform::Drive> MakeAtaDrive(std::filesystem::path node,
                                              std::optional<dev_t> number);

}  // namespace machines
