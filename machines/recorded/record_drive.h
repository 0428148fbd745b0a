// The recording of a drive: what it answers, as the dictionary that answers in its
// place later.
#pragma once

#include <string>
#include <vector>

#include "platform/machine.h"

namespace machines {

struct DriveRecording {
  platform::Dictionary answers;
  std::vector<std::string> failures;  // what the drive did not answer, in words
};

// Opens the drive, sends it each command of a pass once, and closes it. What fails
// is recorded so that it fails again.
DriveRecording RecordDrive(platform::Drive& drive);

}  // namespace machines
