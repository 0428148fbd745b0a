// An NVMe drive of this host, which is asked by admin commands to its device node.
#pragma once

#include "machines/linux/disk_node.h"
#include "platform/machine.h"

namespace machines {

// Makes a drive that opens its node, sends Get Log Page for the SMART / Health Information log of
// the whole controller and Identify Controller for the temperature limits, each once, and closes
// the node again. A drive that does not send the log counts as not opened; limits may be missing. A
// log of zeros is none: it comes from a layer that did not ask the drive.
platform::Drive MakeNvmeDrive(DiskNode node);

}  // namespace machines
