// What every program's main does besides its work.
#pragma once

#include "tools/command_line.h"

namespace tools {

// The whole of a program's main: prepares the standard streams, parses the arguments,
// answers --help and --version or else calls `run`. Returns the status of the process: that
// of `run`; `usageStatus` after a mistake in the arguments, which is told with the help
// text and which `run` may throw as UsageError too; 1 after any other exception, whose
// message is printed as one line.
int RunProgram(const CommandLine& line, int argc, char** argv, int (*run)(const Arguments&),
               int usageStatus = 2);

}  // namespace tools
