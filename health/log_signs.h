// The signs of trouble in the logs of NVMe drives and SCSI disks, which judge themselves.
#pragma once

#include <vector>

#include "drives/facts.h"
#include "health/health.h"

namespace health {

// Adds the reasons that the drive's own warnings and its spare room give, or that nothing
// is known of it. What drives of all kinds count is judged by AddSigns (health/signs.h).
void AddLogSigns(std::vector<Reason>& reasons, const drives::Drive& drive);

}  // namespace health
