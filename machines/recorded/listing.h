// The inverse of recorded_machine.h: a property list of a machine, from which the same
// machine is read again.
#pragma once

#include <functional>

#include "platform/machine.h"

namespace machines {

// Gives the RecordedDrive of an entry that has a drive.
using DriveRecorder = std::function<platform::Dictionary(const platform::Entry&)>;

// The listing of `machine`. `record` is called once for each entry with a drive, in the
// order of the tree, and what it throws passes through. The system version stands on the
// first root; a machine without entries becomes a root that has it alone.
platform::Property ListingOf(const platform::Machine& machine, const DriveRecorder& record);

}  // namespace machines
