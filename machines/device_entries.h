// How a host's disks stand in a machine: the names that its sources and its readers share.
#pragma once

#include <string>
#include <string_view>

#include "platform/machine.h"

namespace machines {

// The probe looks for ATA devices by this name, and for AHCI devices by this class.
inline constexpr const char* kATADeviceName = "IOATABlockStorageDevice";
inline constexpr const char* kAHCIDeviceClass = "IOAHCIBlockStorageDevice";
// The class of the entries of disks that the probe does not look for.
inline constexpr const char* kOtherDiskClass = "IOBlockStorageDevice";

// What a device is, of its own properties.
inline constexpr const char* kCharacteristicsKey = "Device Characteristics";
inline constexpr const char* kProductNameKey = "Product Name";
inline constexpr const char* kSerialNumberKey = "Serial Number";
// Of the medium below it: the name of its block device.
inline constexpr const char* kDiskNameKey = "BSD Name";

// The name of the medium below the device, such as "sda", or else the product's, or the entry's.
std::string DiskName(const platform::Entry& device);

// The text under `key` in the device's characteristics; empty where there is none.
std::string Characteristic(const platform::Entry& device, std::string_view key);

}  // namespace machines
