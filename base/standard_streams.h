// The standard streams of a program: their state at its start, its messages, and
// whether its output arrived.
#pragma once

#include <string_view>

namespace base {

inline constexpr int kFailureStatus = 1;

// To be called before any file is opened. From then on a reader of the output that has
// gone, or a file at its limit of size, makes a write fail and does not end the process;
// and no file gets the descriptor of a standard stream that was closed at the start.
void PrepareStandardStreams();

// Prints "program: what" as one line on standard error; OneLine (printable_text.h) says what
// becomes of characters that do not fit one. A failure to print it is ignored.
void PrintError(std::string_view program, std::string_view what);

// To be called when the last of the output is written. Returns the status with which
// the program ends: 0, or kFailureStatus after a message when some of it was lost.
int FinishOutput(std::string_view program);

}  // namespace base
