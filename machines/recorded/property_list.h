// A property list as the platform's values. Everything that knows libplist is behind this.
#pragma once

#include <string>

#include "platform/machine.h"

namespace machines {

// Reads what CanonicalPropertyList wrote. Throws RecordingError when libplist cannot.
platform::Property ParsePropertyList(std::string canonical);

}  // namespace machines
