// How a host's disks stand in a machine: the names that sources write and readers look for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/machine.h"

namespace machines {

// The probe looks for ATA devices by this name, and for AHCI devices by this class.
inline constexpr const char* kATADeviceName = "IOATABlockStorageDevice";
inline constexpr const char* kAHCIDeviceClass = "IOAHCIBlockStorageDevice";
// The class of the entries of disks that the probe does not look for.
inline constexpr const char* kOtherDiskClass = "IOBlockStorageDevice";

// The property of a device that says what it is, a dictionary, and keys in it.
inline constexpr const char* kCharacteristicsKey = "Device Characteristics";
inline constexpr const char* kProductNameKey = "Product Name";
inline constexpr const char* kSerialNumberKey = "Serial Number";
inline constexpr const char* kRevisionKey = "Product Revision Level";
// A property of the medium below a device: the name of its block device.
inline constexpr const char* kDiskNameKey = "BSD Name";
inline constexpr const char* kSizeKey = "Size";  // in bytes

// Of the first root of a recording: which host it is of, what system that runs, and when it was
// recorded.
inline constexpr const char* kHostKey = "RecordedHost";
inline constexpr const char* kHostSystemKey = "System";
inline constexpr const char* kHostNameKey = "Name";
inline constexpr const char* kHostDateKey = "Date";
inline constexpr const char* kLinux = "Linux";

// The size of the medium below the device, in bytes.
std::optional<std::int64_t> MediumSize(const platform::Entry& device);

// The name of the medium below the device, such as "sda". If there is none, the product's name, or
// without that the entry's name.
// Borrowed from the entry.
std::string_view DiskName(const platform::Entry& device);

// What tells a drive from all others: its product and serial number. Empty without a serial number,
// since then it may be any.
std::string IdentityOf(std::string_view product, std::string_view serial);

// Whether the kernel of Linux names one disk before the other: sda to sdz, then sdaa.
inline bool IsNamedBefore(std::string_view one, std::string_view other) {
  return one.size() != other.size() ? one.size() < other.size() : one < other;
}

// The text under `key` in the device's characteristics, borrowed from them. Empty if there is none.
std::string_view Characteristic(const platform::Entry& device, std::string_view key);

}  // namespace machines
