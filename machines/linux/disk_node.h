// The device node of a disk of this host, through which its drive is asked.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/descriptor.h"
#include "platform/machine.h"

namespace machines {

struct DiskNode {
  std::filesystem::path path;
  std::optional<dev_t> number;  // the block device that `path` must be; without a number, the node
                                // is not opened
  std::vector<int> capabilities = {};  // that asking the drive takes, such as CAP_SYS_RAWIO
};

// Opens the node for reading, without waiting for a medium. If that fails, or the node is not the
// disk's, the result is not open, and `why` says so in words. Once it is open, this process gives
// up all other capabilities than those of the node.
base::Descriptor OpenNode(const DiskNode& node, std::string& why);

// Gives what `ask` answers through the open node; `ask` must leave it open. If the node cannot be
// opened, it is not asked, and whyNotOpened says so.
platform::DriveAnswers AskNode(const DiskNode& node,
                               const std::function<platform::DriveAnswers(int)>& ask);

// Answers that say why a drive could not be asked, or not to the end.
platform::DriveAnswers NotAnswered(std::string why);

}  // namespace machines
