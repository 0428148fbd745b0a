// The opening of a disk's device node.
#pragma once

#include <sys/types.h>

#include <filesystem>

#include "base/descriptor.h"

namespace machines {

// The node, opened for reading without waiting for a medium. Not open: it cannot be
// opened, or is not the block device of that number. The name of a disk that went away
// may by now be another's, and what lies in the folder may be anything.
base::Descriptor OpenBlockDevice(const std::filesystem::path& node, dev_t number);

}  // namespace machines
