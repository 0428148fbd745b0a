// How old the answers of a host's drives are.
#pragma once

#include <chrono>

#include "drives/facts.h"

namespace drives {

// Adds to a host from a recording how long before `now` the newest answers came, and to each drive
// whose answers came a day or more before these how long ago that was. A date after `now` is no
// age.
void AddAges(Host& host, std::chrono::sys_seconds now);

}  // namespace drives
