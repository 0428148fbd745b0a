// The facts of a recorded machine's drives: what the probe reports about each, with what the
// recording holds besides.
#pragma once

#include "drives/facts.h"
#include "platform/machine.h"

namespace tools {

// Runs the probe once for each device of the machine by itself, so that no text can be taken for
// another device's. The drives come in the order of the report. Throws as ReplayDevice
// (tools/replay.h) does, and std::runtime_error for a machine of more than 4,096 disks.
drives::Host ReadRecordedHost(platform::Machine machine);

}  // namespace tools
