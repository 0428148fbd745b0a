// The machines that are measured.
#pragma once

#include "platform/machine.h"

namespace bench {

inline constexpr int kAttributes = 30;

// `drives` AHCI drives, each with a medium, IDENTIFY data, and kAttributes attributes with
// thresholds.
platform::Machine MachineOf(int drives);

// The same with `entries` further entries that are no drives, ahead of them.
platform::Machine MachineAmong(int entries, int drives);

}  // namespace bench
