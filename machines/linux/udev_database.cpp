// The one file that includes libudev's header.
#include "machines/linux/udev_database.h"

#include <libudev.h>

#include <memory>
#include <string_view>

namespace machines {

bool IsATAByUdev(dev_t number) {
  const std::unique_ptr<udev, decltype(&udev_unref)> context(udev_new(), udev_unref);
  if (!context) return false;
  const std::unique_ptr<udev_device, decltype(&udev_device_unref)> device(
      udev_device_new_from_devnum(context.get(), 'b', number), udev_device_unref);
  if (!device) return false;
  const char* value = udev_device_get_property_value(device.get(), "ID_ATA");
  return value != nullptr && std::string_view(value) == "1";
}

}  // namespace machines
