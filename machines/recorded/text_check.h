// The check that every text of a property is fit for the platform's strings.
#pragma once

#include <optional>
#include <string>

#include "platform/machine.h"

namespace machines {

// What is wrong with a key or text in there, behind the keys that lead to it:
// "Device Characteristics: Product Name: text that is not UTF-8". Nothing: all is well.
std::optional<std::string> TextFault(const platform::KeyedProperty& keyed);

}  // namespace machines
