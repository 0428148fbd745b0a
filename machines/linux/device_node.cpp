#include "machines/linux/device_node.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace machines {

base::Descriptor OpenBlockDevice(const std::filesystem::path& node, dev_t number) {
  base::Descriptor opened(open(node.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status {};
  if (!opened.IsOpen() || fstat(opened.number(), &status) != 0) return {};
  if (!S_ISBLK(status.st_mode) || status.st_rdev != number) return {};
  return opened;
}

}  // namespace machines
