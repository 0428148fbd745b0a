// A SCSI disk of this host that does not speak ATA, which is asked by SCSI commands to its device
// node.
#pragma once

#include <string>

#include "machines/linux/disk_node.h"
#include "machines/linux/kept_answers.h"
#include "platform/machine.h"

namespace machines {

struct ScsiNode {
  DiskNode node;
  std::string identity = {};  // by which its answers are kept
  bool isOnUSB = false;
};

// Makes a disk that opens its node, sends LOG SENSE for the list of log pages and for those pages
// of machines/entries/drive_logs.h that are in the list, REQUEST SENSE if the page of exceptions is
// not, and READ DEFECT DATA(10) for the length of the grown list. Each is sent once, and once more
// after a unit attention. Then the node is closed again.
//
// A disk that refuses LOG SENSE has nothing to say: its answers have no logs, and no date. So has
// one behind USB that fails it, as many do that do not know it. After any other failure of LOG
// SENSE nothing more is sent, and whyNotOpened says what failed. The defect list may be missing.
//
// If answers are kept, REQUEST SENSE is sent first. A disk that is stopped or in standby then gives
// its kept answers. If none of the disk are kept, it is asked like any other.
platform::Drive MakeScsiDrive(ScsiNode node, KeptAnswers kept = {});

}  // namespace machines
