// The standard streams of a program: their state at its start, its messages, and
// whether its output arrived.
#pragma once

#include <string_view>

namespace base {

inline constexpr int kFailureStatus = 1;

// To be called before any file is opened. A reader of the output that goes away, or a
// limit on the size of files, is a failed write like any other from now on, and a file
// that is opened later does not become a standard stream that was closed.
void PrepareStandardStreams();

// Prints "program: what" as one line on standard error, whatever characters are in it.
void PrintError(std::string_view program, std::string_view what);

// To be called when the last of the output is written. Returns the status with which
// the program ends: 0, or kFailureStatus after a message when some of it was lost.
int FinishOutput(std::string_view program);

}  // namespace base
