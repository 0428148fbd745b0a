// What an open file says of the device behind it. Apart from the rest, so that a test can stand
// in for it.
#pragma once

#include <sys/types.h>

#include <optional>

namespace machines {

// The number of the block device that `descriptor` is open on. nullopt if it is none, or not open.
std::optional<dev_t> BlockDeviceNumber(int descriptor);

}  // namespace machines
