// The platform's values as an XML property list, for recordings that are made here.
#pragma once

#include <string>

#include "platform/machine.h"

namespace machines {

// An XML property list of `property`. Throws RecordingError for what libplist cannot
// hold: a text with characters that XML does not allow, a number of a type that no
// machine source makes, a date outside 1933 to 2068.
std::string WritePropertyList(const platform::Property& property);

}  // namespace machines
