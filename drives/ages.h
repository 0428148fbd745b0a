// How old the answers of a host's drives are.
#pragma once

#include <chrono>

#include "drives/facts.h"

namespace drives {

// For so long the newest answers of a host count as new.
inline constexpr std::chrono::days kFresh{2};

// Adds the ages at the time `now` to a host from a recording: of the newest answers, and of each
// drive that answered a day or more before these. A date that lies more than a day after `now`
// comes from a wrong clock: it counts for neither, and the host says so.
void AddAges(Host& host, std::chrono::sys_seconds now);

}  // namespace drives
