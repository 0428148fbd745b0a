// A drive of this host, which is asked by ATA commands to its device node.
#pragma once

#include <optional>

#include "machines/linux/disk_node.h"
#include "machines/linux/kept_answers.h"
#include "platform/machine.h"

namespace machines {

struct AtaNode {
  DiskNode node;
  std::optional<base::Block> identify = {};  // if the kernel keeps the data
};

// Makes a drive that opens its node, sends each command once and closes the node again. The order
// is IDENTIFY DEVICE, ENABLE OPERATIONS, RETURN STATUS, READ DATA, READ THRESHOLDS. After a failure
// nothing more is sent, and whyNotOpened says what failed.
//
// A drive that says that it has no S.M.A.R.T. is asked nothing more. It counts as opened, but
// cannot be enabled. A drive that only refuses READ THRESHOLDS has no thresholds. If an adapter
// drops the registers of RETURN STATUS, the data and the thresholds give the condition. If they do
// not give it either, the drive does not count as opened. An adapter that did not ask the drive
// gives a block of zeros: IDENTIFY DEVICE or READ DATA has then failed.
//
// If answers are kept, CHECK POWER MODE is sent first. A drive in standby then gives its kept
// answers and is not woken: it is sent only IDENTIFY DEVICE, and not even that if the node has the
// data. If no answers of the drive are kept, it is asked like any other.
platform::Drive MakeAtaDrive(AtaNode node, KeptAnswers kept = {});

// Adds the logs of the drive (machines/linux/ata_logs.h), which has just answered all else. They
// may be missing.
void AddAtaLogs(const DiskNode& node, platform::DriveAnswers& answers);

}  // namespace machines
