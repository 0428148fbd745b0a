// The probe run on the machine of a recording, which stands for the host: this defines
// platform::ThisMachine().
#pragma once

#include <string>

#include "platform/machine.h"

namespace tools {

// Each is to be called once in a process. Throws std::bad_alloc also where only the probe, which
// has no words for it, runs out of memory.

// Prints the report on standard output, without flushing it.
void Replay(platform::Machine machine);

// The report as a text. Throws std::runtime_error for a machine whose system is too old for the
// probe: it looks at nothing there, which is not to be taken for no drives.
std::string ReplayedReport(platform::Machine machine);

}  // namespace tools
