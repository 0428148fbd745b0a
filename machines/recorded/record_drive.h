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

// Opens the drive and asks it for all that a pass asks for, each once. What fails is
// recorded so that it fails again. Of a drive that cannot be opened or enabled what came
// all the same is recorded too: such recordings are what people send.
DriveRecording RecordDrive(platform::Drive& drive);

}  // namespace machines
