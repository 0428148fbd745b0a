// The keys that have a meaning of their own in a recorded machine.
#pragma once

#include <string_view>

namespace machines {

// Of an entry.
inline constexpr std::string_view kNameKey = "IORegistryEntryName";
inline constexpr std::string_view kClassKey = "IOObjectClass";
inline constexpr std::string_view kChildrenKey = "IORegistryEntryChildren";
inline constexpr std::string_view kDriveKey = "RecordedDrive";
inline constexpr std::string_view kVersionKey = "ProductVersion";  // of the first root

// Of a recorded drive.
inline constexpr std::string_view kDataKey = "Data";
inline constexpr std::string_view kThresholdsKey = "Thresholds";
inline constexpr std::string_view kIdentifyKey = "Identify";
inline constexpr std::string_view kExceededKey = "ThresholdExceeded";
inline constexpr std::string_view kEnableFailsKey = "EnableFails";
inline constexpr std::string_view kQueryFailsKey = "QueryFails";

}  // namespace machines
