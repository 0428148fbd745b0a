// The standard streams of a program: their state at its start, its messages, and
// whether its output arrived.
#pragma once

#include <string_view>

namespace base {

// The status of a program that could not do its work, but for smartprobe's own, which is
// always 0, and for a verdict or a mistake in the arguments, which have theirs.
inline constexpr int kFailureStatus = 1;

// To be called before any file is opened. From then on a file at its limit of size makes a write
// fail and does not end the process, and no file gets the descriptor of a standard stream that was
// closed at the start. SIGPIPE stays as it was: by default it ends the process without a word.
void PrepareStandardStreams();

// Prints "program: what" as one line on standard error; OneLine (printable_text.h) says what
// becomes of characters that do not fit one. A failure to print it is ignored.
void PrintError(std::string_view program, std::string_view what);

// To be called when the last of the output is written. Returns the status with which
// the program ends: 0, or kFailureStatus after a message when some of it was lost. Flushes the
// output and does not close it; an earlier failure counts, even if all is well by now.
int FinishOutput(std::string_view program);

}  // namespace base
