// The standard streams of every program: its messages, and whether its output arrived.
#pragma once

#include <string_view>

namespace tools {

inline constexpr int kFailureStatus = 1;

// Prints "program: what" as one line on standard error, whatever characters are in it.
void PrintError(std::string_view program, std::string_view what);

// To be called when the last of the output is written. Returns the status with which
// the program ends: 0, or kFailureStatus after a message when some of it was lost.
int FinishOutput(std::string_view program);

}  // namespace tools
