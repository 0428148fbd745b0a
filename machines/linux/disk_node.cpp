#include "machines/linux/disk_node.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "machines/linux/block_device.h"
#include "machines/linux/capabilities.h"

namespace machines {

// Checks the device number, because another disk may have the name by now, and any kind of file may
// lie in the folder.
base::Descriptor OpenNode(const DiskNode& node, std::string& why) {
  base::Descriptor opened(open(node.path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!opened.IsOpen()) {
    const bool isForbidden = (errno == EACCES || errno == EPERM) && geteuid() != 0;
    why = std::string("cannot open its device node: ") + strerror(errno) +
          (isForbidden ? " (run as root)" : "");
  } else if (!node.number || BlockDeviceNumber(opened.Number()) != node.number) {
    why = "its device node is not known to be the disk's";
    return {};
  }
  KeepCapabilities(node.capabilities);
  return opened;
}

platform::DriveAnswers AskNode(const DiskNode& node,
                               const std::function<platform::DriveAnswers(int)>& ask) {
  std::string why;
  const base::Descriptor opened = OpenNode(node, why);
  return opened.IsOpen() ? ask(opened.Number()) : NotAnswered(why);
}

platform::DriveAnswers NotAnswered(std::string why) {
  platform::DriveAnswers answers;
  answers.whyNotOpened = std::move(why);
  return answers;
}

}  // namespace machines
