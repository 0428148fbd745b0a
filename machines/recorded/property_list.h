// A property list as the platform's values, and back. Everything that knows libplist is
// behind this.
#pragma once

#include <string>

#include "platform/machine.h"

namespace machines {

// Reads what CanonicalPropertyList wrote. Throws RecordingError when libplist cannot.
platform::Property ParsePropertyList(std::string canonical);

// An XML property list of `property`. Its texts hold no NUL. Throws RecordingError when
// libplist cannot.
std::string WritePropertyList(const platform::Property& property);

}  // namespace machines
