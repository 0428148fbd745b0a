// What udev found out about the host's disks when they appeared. It is a file of its own, so that a
// test can replace it.
#pragma once

#include <sys/types.h>

namespace machines {

// Whether udev has asked the block device of that number and it is an ATA disk. udev also asks
// disks behind a USB bridge, and the kernel does not. False also if there is no udev.
bool IsATAByUdev(dev_t number);

}  // namespace machines
