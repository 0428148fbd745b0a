// The report of a recorded machine, with what the recording tells besides.
#pragma once

#include "platform/machine.h"
#include "report/report.h"

namespace tools {

// Runs the probe on the machine and reads its report; adds of each drive what it answered beyond
// that, and which disks are not in the report. To be called once in a process. Throws as
// ReplayInMemory (replayed_report.h) does.
report::Report RecordedReport(platform::Machine machine);

}  // namespace tools
