// The device behind an open file. It is a file of its own, so that a test can replace it.
#pragma once

#include <sys/types.h>

#include <optional>

namespace machines {

// The number of the block device that `descriptor` is open on. nullopt if it is not open, or not on
// a block device.
std::optional<dev_t> BlockDeviceNumber(int descriptor);

}  // namespace machines
