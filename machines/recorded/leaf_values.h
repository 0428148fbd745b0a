// The values of a property list's leaves from their texts. Where the elements may stand is
// told in element_stack.cpp.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/machine.h"

namespace machines {

// The value of the element `name` with this text, whose line ends are LF. nullopt if it is
// another element, or the text is not exactly of the element's form:
// - <string>: any; <true> and <false>: none at all;
// - <integer>: an optional sign, then decimal digits or 0x and hexadecimal ones; -2^63 to
//   2^64-1, and from 2^63 up the two's complement of a negative number;
// - <real>: a decimal fraction or power, or C's inf or nan, within a 64-bit number's range;
// - <date>: YYYY-MM-DDTHH:MM:SSZ, any date of the calendar;
// - <data>: base64, padded, with white space anywhere.
std::optional<platform::Property> ParseLeaf(std::string_view name, const std::string& text);

}  // namespace machines
