// Recordings by the names of their files.
#pragma once

#include <string>
#include <string_view>

#include "platform/machine.h"

namespace machines {

// The machine in the recording `bytes`. Throws std::runtime_error, whose what() begins with the
// name `file`, for what is no recording.
platform::Machine ParseRecording(std::string_view bytes, const std::string& file);

// The machine in the file; "-" is standard input. Throws as above, and as base::ReadUpTo does.
platform::Machine ReadRecordingFile(const std::string& file);

}  // namespace machines
