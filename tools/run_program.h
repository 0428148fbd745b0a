// The frame that every program runs in.
#pragma once

#include "tools/command_line.h"

namespace tools {

// The whole of a program's main: prepares the standard streams, reads the arguments,
// answers --help and --version, and else returns what `run` returns. After a mistake in
// the arguments, which `run` may throw as UsageError too, it is `usageStatus`; after any
// other exception it is 1, when its message was printed as one line.
int RunProgram(const CommandLine& line, int argc, char** argv, int (*run)(const Arguments&),
               int usageStatus = 2);

}  // namespace tools
