// The standard streams of a program: prepares them at the start, prints messages, and checks
// whether the output arrived.
#pragma once

#include <cstdio>
#include <string_view>

namespace base {

// Call this before any file is opened. From then on a write beyond the limit of file size fails and
// does not end the process, and no file gets the descriptor of a standard stream that was closed at
// the start. SIGPIPE stays as it was: by default it ends the process without a message.
void PrepareStandardStreams();

// Prints "program: what" as one line on standard error or another stream. OneLine
// (printable_text.h) replaces the characters that a line cannot hold. If printing fails, the
// failure is ignored.
void PrintError(std::string_view program, std::string_view what, std::FILE* stream = stderr);

// Call this after the last output. It flushes standard output and leaves it open. Throws
// std::runtime_error, "standard output: why", if any output was lost, also earlier output.
void FinishOutput();

// Prints `text` as the last output and flushes it. Throws as FinishOutput does.
void Print(std::string_view text);

}  // namespace base
