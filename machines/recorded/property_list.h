// XML property lists as the platform's values. What the keys of a recorded machine mean
// is told in keys.h and recorded_machine.h.
#pragma once

#include <string_view>

#include "platform/machine.h"

namespace machines {

// The value of the property list `file`, which is not trusted. The caller bounds its size,
// this function its nesting, its elements and the parser's memory. In the value texts are
// UTF-8 without NUL, dictionaries hold no key twice. Throws RecordingError, with the line
// of the fault where it has one, for what is not well-formed or is no property list.
platform::Property ReadPropertyList(std::string_view file);

}  // namespace machines
