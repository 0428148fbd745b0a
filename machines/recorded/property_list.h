// XML property lists as the platform's values, and back. What the keys of a recorded
// machine mean is told in recording_format.h and read_recording.h.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "platform/machine.h"

namespace machines {

// The value of the property list `file`, which is not trusted. The caller bounds its size,
// this function its nesting, its elements, its attributes and the parser's memory. It is
// read as UTF-8, or UTF-16 where it is that, whatever encoding it declares; comments,
// instructions and attributes are skipped. In the value texts are UTF-8 without NUL,
// dictionaries hold no key twice. Throws RecordingError, with the line of the fault where it has
// one, for what is not well-formed or is no property list, declares anything in its document type,
// or has a reference that cannot be resolved.
platform::Property ReadPropertyList(std::string_view file);

// An XML property list of `property`. Throws RecordingError for what it cannot hold: a text that is
// not UTF-8 or has a character that XML does not give back (control characters but tab and line
// feed, U+FFFE, U+FFFF), a number that no machine source makes, a date outside 1933 to 2068.
std::string WritePropertyList(const platform::Property& property);

// Whether WritePropertyList can write the date.
bool IsWritableDate(std::chrono::sys_seconds date);

}  // namespace machines
