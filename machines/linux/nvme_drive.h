// An NVMe drive of this host, which is asked by admin commands to its device node.
#pragma once

#include "machines/linux/disk_node.h"
#include "platform/machine.h"

namespace machines {

// Makes a drive that opens its node, sends Get Log Page for the SMART / Health Information log of
// the whole controller, once, and closes the node again. A drive that does not send it counts as
// not opened. A log of zeros is none: it comes from a layer that did not ask the drive.
platform::Drive MakeNvmeDrive(DiskNode node);

// Adds what Identify Controller answers, for the temperature limits, and the log of self-tests if
// the drive has them. Each is sent once, and may be missing.
void AddNvmeLogs(const DiskNode& node, platform::DriveAnswers& answers);

}  // namespace machines
