// A drive that answers from what was recorded of one.
#pragma once

#include <memory>

#include "platform/machine.h"

namespace machines {

// `recorded` holds Data, Thresholds and Identify (data of up to 512 bytes, filled up
// with zeros), ThresholdExceeded, EnableFails and QueryFails (Booleans), each of them
// at will: what is not recorded fails. Takes the data out. Throws RecordingError for anything else.
std::shared_ptr<platform::Drive> MakeRecordedDrive(platform::Dictionary& recorded);

}  // namespace machines
