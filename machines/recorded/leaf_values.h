// The values of a property list's leaves from their texts. Which elements there are, and
// where they may stand, is told in property_list.cpp.
#pragma once

#include <optional>
#include <string>

#include "platform/machine.h"

namespace machines {

// Each gives nothing for a text that is not exactly of its form. Line ends are LF.

std::optional<platform::Property> TextValue(const std::string& text);

// An optional sign, then decimal figures or 0x and hexadecimal ones; -2^63 to 2^64-1.
// From 2^63 up it is the two's complement of a negative number.
std::optional<platform::Property> IntegerValue(const std::string& text);

// A decimal fraction or power, inf or nan; nothing beyond a 64-bit number's range.
std::optional<platform::Property> RealValue(const std::string& text);

// YYYY-MM-DDTHH:MM:SSZ, any date of the calendar.
std::optional<platform::Property> DateValue(const std::string& text);

// Base64, padded, with white space anywhere.
std::optional<platform::Property> DataValue(const std::string& text);

// <true> and <false> have no text: any text gives nothing.
std::optional<platform::Property> TrueValue(const std::string& text);
std::optional<platform::Property> FalseValue(const std::string& text);

}  // namespace machines
