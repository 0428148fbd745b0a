// Runs the probe on a machine that stands for the host.
#pragma once

#include <string>

#include "platform/machine.h"

namespace tools {

// Prints the report of the machine on standard output, without flushing it. Throws std::bad_alloc
// also where only the probe, which has no words for it, runs out of memory.
void Replay(platform::Machine machine);

// What the report of the machine that is set says about one of its devices, as if it had no other.
// May be called for one device after another, and leaves the last one the only one that searches
// find (platform::SetOnlyDevice). Throws as Replay does, and std::runtime_error where the machine's
// system is so old that the probe looks at nothing.
std::string ReplayDevice(const platform::Entry& device);

}  // namespace tools
