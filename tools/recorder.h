// smartprobe-record: records a host as a machine.
#pragma once

#include <filesystem>

namespace tools {

// Where the kernel shows a host.
struct HostFolders {
  std::filesystem::path sysfs;  // its devices: /sys
  std::filesystem::path dev;    // their nodes: /dev
};

// The program, for the host in these folders. Gives its status.
int RunRecorder(int argc, char** argv, const HostFolders& folders);

}  // namespace tools
