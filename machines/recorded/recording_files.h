// Reads recordings by the names of their files.
#pragma once

#include <string>
#include <string_view>

#include "platform/machine.h"

namespace machines {

// The machine in the recording `bytes`. If they are no recording, throws std::runtime_error, whose
// what() begins with the name `file`.
platform::Machine ParseRecording(std::string_view bytes, const std::string& file);

// The machine in the file; "-" is standard input. Throws as above, and as base::ReadUpTo does.
platform::Machine ReadRecordingFile(const std::string& file);

}  // namespace machines
