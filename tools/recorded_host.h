// The facts of a recorded machine's drives: what the probe reports about each, and what else the
// recording holds about it.
#pragma once

#include <chrono>

#include "drives/facts.h"
#include "platform/machine.h"

namespace tools {

// Runs the probe once for each device of the machine by itself, so that no text can be taken for
// another device's. The drives come in the order of the report, or, of a host that runs Linux, in
// the order of the kernel's names, with its paths. Ages are those at the time `now`. Leaves the
// platform layer set to this machine and its last device. Throws as ReplayDevice (tools/replay.h)
// does, and std::runtime_error for a machine of more than 4,096 disks.
drives::Host ReadRecordedHost(platform::Machine machine, std::chrono::sys_seconds now);

}  // namespace tools
