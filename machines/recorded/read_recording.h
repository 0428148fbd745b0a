// A machine from a property list in the shape of a registry listing, with what its
// drives answer beside their entries. The file's text is read by property_list.h.
#pragma once

#include <cstddef>
#include <string_view>

#include "platform/machine.h"

namespace machines {

// The values of a file may take several times its size. With this bound a reading stays
// below 512 MiB of memory, whatever the file.
inline constexpr std::size_t kMaxRecordingSize = std::size_t{64} << 20;

// The machine in the text of a recording. Throws RecordingError for a larger one and for
// anything that is no recorded machine, with the line of the file or the path of the entry.
platform::Machine ReadRecording(std::string_view file);

}  // namespace machines
