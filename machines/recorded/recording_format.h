// What the reader and the writer of a recording share: the keys that have a meaning of
// their own, and the one error.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "base/printable_text.h"

namespace machines {

// Keys of an entry.
inline constexpr std::string_view kNameKey = "IORegistryEntryName";
inline constexpr std::string_view kClassKey = "IOObjectClass";
inline constexpr std::string_view kChildrenKey = "IORegistryEntryChildren";
inline constexpr std::string_view kDriveKey = "RecordedDrive";
inline constexpr std::string_view kVersionKey = "ProductVersion";  // of the first root

// Keys of a recorded drive.
inline constexpr std::string_view kDataKey = "Data";
inline constexpr std::string_view kThresholdsKey = "Thresholds";
inline constexpr std::string_view kIdentifyKey = "Identify";
inline constexpr std::string_view kExceededKey = "ThresholdExceeded";
inline constexpr std::string_view kEnableFailsKey = "EnableFails";
inline constexpr std::string_view kQueryFailsKey = "QueryFails";
inline constexpr std::string_view kWhyKey = "WhyNotOpened";
inline constexpr std::string_view kDataFailsKey = "DataFails";
inline constexpr std::string_view kThresholdsFailsKey = "ThresholdsFails";
inline constexpr std::string_view kDateKey = "Date";
inline constexpr std::string_view kWhyNoLogsKey = "WhyNoLogs";
inline constexpr std::string_view kEarlierKey = "Earlier";
inline constexpr std::string_view kGoneKey = "Gone";
inline constexpr std::string_view kGoneSinceKey = "GoneSince";

// Says what is wrong with a recording, and where. what() is one line of printable UTF-8, whatever
// the file has put into it.
class RecordingError : public std::runtime_error {
 public:
  explicit RecordingError(std::string_view message) : std::runtime_error(base::OneLine(message)) {}
};

// `text` of the file for a message: cut after 80 bytes, with "..." in place of the rest.
inline std::string Excerpt(std::string_view text) {
  constexpr std::size_t kMaxLength = 80;
  return std::string(text.substr(0, kMaxLength)) + (text.size() > kMaxLength ? "..." : "");
}

}  // namespace machines
