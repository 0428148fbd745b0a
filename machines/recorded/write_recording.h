// Makes a recording of a machine: the property list from which read_recording.h makes the same
// machine again. property_list.h writes its text.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/machine.h"

namespace machines {

// The answers of a drive as they stand under RecordedDrive. An answer that failed is recorded so
// that it fails again. If the drive could not be opened or enabled, the answers that came are
// recorded too, because people send recordings of just such drives.
platform::Dictionary RecordDrive(const platform::DriveAnswers& answers);

// What an ATA drive did not answer, in words.
std::vector<std::string> FailuresOf(const platform::DriveAnswers& answers);

// Gives the RecordedDrive of an entry that has a drive.
using DriveRecorder = std::function<platform::Dictionary(const platform::Entry&)>;

// The listing of `machine`. `record` is called once for each entry with a drive, in the order of
// the tree, and its exceptions pass through. The first root gets the system version. A machine
// without entries becomes a root that has only the version.
platform::Property ListingOf(const platform::Machine& machine, const DriveRecorder& record);

}  // namespace machines
