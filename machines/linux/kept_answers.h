// The answers that drives gave before, for those that shall not be woken.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/machine.h"

namespace machines {

// Gives the kept answers of the drive with this identity, or nullopt if there are none that are
// still good. An ATA drive has that of its IDENTIFY DEVICE data (drives/identify_data.h), any other
// that of its entry (machines/entries/device_entries.h). An empty function: no answers are kept of
// any drive.
using KeptAnswers = std::function<std::optional<platform::DriveAnswers>(const std::string&)>;

}  // namespace machines
