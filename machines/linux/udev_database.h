// What udev has found out about the host's disks when they appeared. Apart from the rest, so that a
// test can stand in for it.
#pragma once

#include <sys/types.h>

namespace machines {

// Whether udev has asked the block device of that number and it is an ATA disk. It asks those that
// are behind a bridge to USB, which the kernel does not. False also where there is no udev.
bool IsATAByUdev(dev_t number);

}  // namespace machines
