// Reads XML property lists as the platform's values, and writes them. recording_format.h and
// read_recording.h say what the keys of a recorded machine mean.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "platform/machine.h"

namespace machines {

// The value of the property list whose text is `file`. The text is not trusted: the caller limits
// its size, and this function limits its nesting, its elements, its attributes and the parser's
// memory. It is read as UTF-16 if it is that, else as UTF-8, whatever encoding it declares.
// Comments, instructions and attributes are skipped. The texts in the value are UTF-8 without NUL,
// and no dictionary holds a key twice.
//
// Throws RecordingError, with the line of the fault if it has one. A fault is: the text is not
// well-formed or is no property list, its document type has declarations, an attribute has a
// reference, or a reference elsewhere cannot be resolved.
platform::Property ReadPropertyList(std::string_view file);

// `property` as an XML property list. Throws RecordingError for a value that it cannot hold: a text
// that is not UTF-8, a text with a character that XML does not give back (U+FFFE, U+FFFF, and
// control characters other than tab and line feed), a number of a type that no machine source
// makes, or a date outside 1933 to 2068.
std::string WritePropertyList(const platform::Property& property);

// Whether WritePropertyList can write the date.
bool IsWritableDate(std::chrono::sys_seconds date);

}  // namespace machines
