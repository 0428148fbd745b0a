// The logs that an ATA drive keeps of itself.
#pragma once

#include <optional>

#include "base/block.h"
#include "platform/machine.h"

namespace machines {

// Asks the open `node` for the logs of machines/entries/drive_logs.h that the drive with these
// IDENTIFY DEVICE data says it has: SMART READ LOG for the self-tests, and READ LOG EXT for the
// directory of logs, the list of the pages of the device statistics, and those pages of them that
// are shown. These are at most nine commands. None moves the heads. `before` is the block that the
// drive has sent last.
//
// A log is missing where the drive does not send it, or a layer before it gives zeros or an earlier
// block. After a command that fails otherwise than by a refusal, nothing more is sent.
decltype(platform::DriveAnswers::logs) ReadAtaLogs(int node, const base::Block& identify,
                                                   const base::Block& before);

// The log of self-tests alone. nullopt as above.
std::optional<base::Block> ReadSelfTestLog(int node, const base::Block& before);

}  // namespace machines
