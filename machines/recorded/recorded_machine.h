// A machine from a property list in the shape of a registry listing, with what its
// drives answer beside their entries. The file itself is read by property_list.cpp.
#pragma once

#include <cstddef>
#include <string_view>

#include "platform/machine.h"

namespace machines {

inline constexpr std::size_t kMaxRecordingSize = std::size_t{64} << 20;

// Throws RecordingError for anything that is no recorded machine.
platform::Machine ReadRecordedMachine(std::string_view file);

}  // namespace machines
