// A drive that answers from what was recorded of one.
#pragma once

#include <memory>

#include "platform/machine.h"

namespace machines {

// `recorded` may hold Data, Thresholds and Identify (data of at most 512 bytes; a shorter
// block is filled up with zeros) and ThresholdExceeded, EnableFails and QueryFails
// (Booleans). An answer that is not there makes its command fail; enabling and opening
// fail only where their key says so. The data are moved out of `recorded`. Throws
// RecordingError for another key, another type and a longer block.
std::shared_ptr<platform::Drive> MakeRecordedDrive(platform::Dictionary& recorded);

}  // namespace machines
