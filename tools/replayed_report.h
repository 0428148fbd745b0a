// The probe's report of a machine, as a text. Whoever links this has the machine of a recording for
// the platform's: this defines platform::ThisMachine().
#pragma once

#include <string>

#include "platform/machine.h"

namespace tools {

// Replaces the machine that the platform answers from.
void Install(platform::Machine machine);

// Runs the probe on that machine and returns what it prints. Nothing else may print on standard
// output meanwhile. Throws std::bad_alloc, and nothing is lost then but the report.
std::string ReplayedReport();

}  // namespace tools
