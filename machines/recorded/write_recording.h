// The making of a recording: a machine as the property list from which read_recording.h
// makes the same machine again. Its text is written by property_list.h.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/machine.h"

namespace machines {

struct DriveRecording {
  platform::Dictionary answers;       // what stands under RecordedDrive
  std::vector<std::string> failures;  // what the drive did not answer, in words
};

// What fails is recorded so that it fails again. Of a drive that cannot be opened or enabled what
// came all the same is recorded too: such recordings are what people send.
DriveRecording RecordDrive(const platform::DriveAnswers& answers);

// Gives the RecordedDrive of an entry that has a drive.
using DriveRecorder = std::function<platform::Dictionary(const platform::Entry&)>;

// The listing of `machine`. `record` is called once for each entry with a drive, in the
// order of the tree, and what it throws passes through. The system version stands on the
// first root; a machine without entries becomes a root that has it alone.
platform::Property ListingOf(const platform::Machine& machine, const DriveRecorder& record);

}  // namespace machines
