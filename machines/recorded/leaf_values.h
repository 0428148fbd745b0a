// Makes the values of a property list's leaves from their texts. element_stack.cpp checks where the
// elements may stand.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/machine.h"

namespace machines {

// The value of the element `name` with this text, whose line ends are LF. nullopt if `name` is not
// one of these elements, or the text does not have the element's form:
// - <string>: any text; <true> and <false>: no text at all;
// - <integer>: an optional sign, then decimal digits or 0x and hexadecimal ones; -2^63 to
//   2^64-1, where a number from 2^63 up is the two's complement of a negative one;
// - <real>: a decimal fraction or power, or C's inf or nan, within a 64-bit number's range;
// - <date>: YYYY-MM-DDTHH:MM:SSZ, any date of the calendar;
// - <data>: base64, padded, with white space anywhere.
// An integer, a real and a date may have white space around them.
std::optional<platform::Property> ParseLeaf(std::string_view name, const std::string& text);

}  // namespace machines
