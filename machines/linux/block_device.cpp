#include "machines/linux/block_device.h"

#include <sys/stat.h>

namespace machines {

std::optional<dev_t> BlockDeviceNumber(int descriptor) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0 || !S_ISBLK(status.st_mode)) return std::nullopt;
  return status.st_rdev;
}

}  // namespace machines
