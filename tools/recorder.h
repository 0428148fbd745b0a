// smartprobe-record: records a host as a machine.
#pragma once

#include "tools/this_host.h"

namespace tools {

// The program, for the host in these folders. Gives its status.
int RunRecorder(int argc, char** argv, const HostFolders& folders);

}  // namespace tools
