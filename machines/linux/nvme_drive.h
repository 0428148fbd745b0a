// An NVMe drive of this host, which is asked by admin commands to its device node.
#pragma once

#include "machines/linux/disk_node.h"
#include "platform/machine.h"

namespace machines {

// Makes a drive that opens its node, sends Get Log Page for the SMART / Health Information log of
// the whole controller, Identify Controller for the temperature limits, and Get Log Page for the
// self-tests if it has them, each once, and closes the node again. A drive that does not send the
// health log counts as not opened; the others may be missing. A health log of zeros is none: it
// comes from a layer that did not ask the drive.
platform::Drive MakeNvmeDrive(DiskNode node);

}  // namespace machines
