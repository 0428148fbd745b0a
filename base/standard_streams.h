// The standard streams of a program: their state at its start, its messages, and
// whether its output arrived.
#pragma once

#include <cstdio>
#include <string_view>

namespace base {

// To be called before any file is opened. From then on a file at its limit of size makes a write
// fail and does not end the process, and no file gets the descriptor of a standard stream that was
// closed at the start. SIGPIPE stays as it was: by default it ends the process without a word.
void PrepareStandardStreams();

// Prints "program: what" as one line on standard error or another stream; OneLine
// (printable_text.h) replaces the characters that do not fit one. A failure to print it is ignored.
void PrintError(std::string_view program, std::string_view what, std::FILE* stream = stderr);

// To be called when the last of the output is written: flushes it and does not close it. Throws
// std::runtime_error, "standard output: why", when any of it was lost, also long before.
void FinishOutput();

// Prints `text` as the last of the output. Throws as FinishOutput does.
void Print(std::string_view text);

}  // namespace base
