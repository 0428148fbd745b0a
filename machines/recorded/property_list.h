// XML property lists as the platform's values. What the keys of a recorded machine mean
// is recorded_machine.h's.
#pragma once

#include <string_view>

#include "platform/machine.h"

namespace machines {

// The value of the property list `file`, which is not trusted: its size is the caller's
// to bound, its nesting, its elements and the parser's memory are bounded here. Texts are
// UTF-8 without NUL, dictionaries hold no key twice. Throws RecordingError, with the line
// of the fault where it has one, for what is not well-formed or is no property list.
platform::Property ReadPropertyList(std::string_view file);

}  // namespace machines
