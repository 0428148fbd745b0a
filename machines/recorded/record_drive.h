// The recording of a drive: what it answers, as the dictionary from which recorded_drive.h
// makes a drive that answers the same.
#pragma once

#include <string>
#include <vector>

#include "platform/machine.h"

namespace machines {

struct DriveRecording {
  platform::Dictionary answers;
  std::vector<std::string> failures;  // what the drive did not answer, in words
};

// Opens the drive, asks it for all that a pass asks for, each once, and closes it. What
// fails is recorded so that it fails again; after a failure to open or to enable nothing
// more is asked.
DriveRecording RecordDrive(platform::Drive& drive);

}  // namespace machines
