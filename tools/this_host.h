// This host as a machine: asks its drives, and says which host it is.
#pragma once

#include <filesystem>

#include "machines/linux/host_machine.h"
#include "platform/machine.h"

namespace tools {

// Where the kernel shows a host.
struct HostFolders {
  std::filesystem::path sysfs;  // its devices: /sys
  std::filesystem::path dev;    // their nodes: /dev
};

// The host in these folders, with its name and the date in its root entry. Where standard error is
// a terminal it shows there how many drives have answered. Throws as machines::ListDisks does.
platform::Machine AskHost(const HostFolders& folders, machines::KeptAnswers kept = {});

}  // namespace tools
