// Answers of a drive as bytes, to send them from one process to another of the same program.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/machine.h"

namespace machines {

std::string Packed(const platform::DriveAnswers& answers);

// The answers in `bytes`. nullopt if these are not all that Packed gave, from the first to the
// last: a process may end while it writes.
std::optional<platform::DriveAnswers> Unpacked(std::string_view bytes);

}  // namespace machines
