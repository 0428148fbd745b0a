// The machine that this program runs on, as the kernel describes it in sysfs. No device
// is opened for it.
#pragma once

#include <filesystem>

#include "platform/machine.h"

namespace machines {

// The host's ATA disks, each above an entry of its medium, in the kernel's order of naming. Their
// drives open the disks' nodes in `dev` when the
// probe asks for them. Of what `sysfs` does not tell, a size is left out, a model is empty,
// and S.M.A.R.T. is taken to be supported. A host without such disks is a root alone, and so is
// one whose `sysfs` cannot be read; a disk that goes away meanwhile is left out. Throws nothing
// but std::bad_alloc. Wakes no drive: the kernel keeps what is read here.
platform::Machine ReadLinuxMachine(const std::filesystem::path& sysfs = "/sys",
                                   const std::filesystem::path& dev = "/dev");

}  // namespace machines
