// A machine as the property list that is read as one again.
#pragma once

#include <functional>

#include "platform/machine.h"

namespace machines {

// Gives the RecordedDrive of an entry that has a drive.
using DriveRecorder = std::function<platform::Dictionary(const platform::Entry&)>;

// The listing of `machine`, with what `record` gives for each entry with a drive, asked
// for in the order of the tree. The system version stands on the first root.
platform::Property ListingOf(const platform::Machine& machine, const DriveRecorder& record);

}  // namespace machines
