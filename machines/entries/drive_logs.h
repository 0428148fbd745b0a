// The logs of drives in their answers: the names that sources write and readers look for. None has
// more bytes than a block.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace machines {

// Of an NVMe drive: the SMART / Health Information log page, and the first bytes of its Identify
// Controller data.
inline constexpr std::string_view kHealthLog = "HealthLog";
inline constexpr std::string_view kIdentifyController = "IdentifyController";

// Of a SCSI disk: the answer to REQUEST SENSE, and the header of the grown defect list.
inline constexpr std::string_view kSense = "Sense";
inline constexpr std::string_view kDefectListHeader = "DefectListHeader";

struct ScsiPage {
  std::uint8_t code;
  std::string_view name;
};

// The log pages of a SCSI disk, each with its header.
inline constexpr std::array kScsiPages = {ScsiPage{0x02, "LogPage02"}, ScsiPage{0x03, "LogPage03"},
                                          ScsiPage{0x05, "LogPage05"}, ScsiPage{0x0D, "LogPage0D"},
                                          ScsiPage{0x0E, "LogPage0E"}, ScsiPage{0x11, "LogPage11"},
                                          ScsiPage{0x15, "LogPage15"}, ScsiPage{0x2F, "LogPage2F"}};

// Whether a log has that name.
constexpr bool IsDriveLog(std::string_view name) {
  if (name == kHealthLog || name == kIdentifyController || name == kSense ||
      name == kDefectListHeader) {
    return true;
  }
  for (const ScsiPage& page : kScsiPages) {
    if (page.name == name) return true;
  }
  return false;
}

}  // namespace machines
