// The system version of a recorded machine.
#pragma once

#include <optional>
#include <string_view>

#include "platform/machine.h"

namespace machines {

// "10.5.8" as 0x1058: one to three figures, the first at most 99; each of the others
// is one digit, 9 when it is larger. Nothing for any other text.
std::optional<SInt32> SystemVersion(std::string_view productVersion);

}  // namespace machines
