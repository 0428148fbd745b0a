// The probe run on the machine of a recording, which stands for the host: this defines
// platform::ThisMachine().
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/machine.h"

namespace tools {

// Each is to be called once in a process. Throws std::bad_alloc also where only the probe, which
// has no words for it, runs out of memory.

// Prints the report on standard output, without flushing it.
void Replay(platform::Machine machine);

// A device that the probe has looked at.
struct Visit {
  const platform::Entry* device;  // of platform::ThisMachine()
  std::size_t begin;  // where its lines begin in the report; they end where the next's do
};

struct ReplayedReport {
  std::string text;
  std::vector<Visit> visits;  // in the report's order, those that gave no line among them
};

// The report as a text. Throws std::runtime_error for a machine whose system is too old for the
// probe: it looks at nothing there, which is not to be taken for no drives.
ReplayedReport ReplayInMemory(platform::Machine machine);

}  // namespace tools
