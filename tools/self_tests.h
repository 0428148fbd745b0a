// smartprobe-selftest: has drives test themselves.
#pragma once

#include <chrono>

#include "tools/this_host.h"

namespace tools {

// How patient the program is.
struct SelfTestTimes {
  std::chrono::milliseconds interval = std::chrono::seconds(10);  // between looks at a test
  std::chrono::milliseconds silence = std::chrono::seconds(150);  // of a drive that is given up
};

// The program, for the host in these folders. Gives its status.
int RunSelfTests(int argc, char** argv, const HostFolders& folders,
                 const SelfTestTimes& times = {});

}  // namespace tools
