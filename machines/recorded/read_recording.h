// Makes a machine from a property list in the shape of a registry listing, which has the answers of
// each drive in its entry. property_list.h reads the file's text.
#pragma once

#include <cstddef>
#include <string_view>

#include "platform/machine.h"

namespace machines {

// In bytes. The values of a file may take several times its size. With this limit, reading any file
// takes less than 512 MiB of memory.
inline constexpr std::size_t kMaxRecordingSize = std::size_t{64} << 20;

// The machine in the recording whose text is `file`. Throws RecordingError if the text is larger or
// is no recorded machine, with the line of the file or the path of the entry.
platform::Machine ReadRecording(std::string_view file);

}  // namespace machines
