// The three standard streams of every program: their state at its start, its messages,
// and whether its output arrived.
#pragma once

#include <string_view>

namespace tools {

inline constexpr int kFailureStatus = 1;

// To be called first. A reader of the output that goes away is a failed write like
// any other, and no file that is opened later becomes a standard stream.
void PrepareStandardStreams();

// Prints "program: what" as one line on standard error, whatever characters are in it.
void PrintError(std::string_view program, std::string_view what);

// To be called when the last of the output is written. Returns the status with which
// the program ends: 0, or kFailureStatus after a message when some of it was lost.
int FinishOutput(std::string_view program);

}  // namespace tools
