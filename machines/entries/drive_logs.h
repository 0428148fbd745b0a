// The logs of drives in their answers: the names that sources write and readers look for, and how
// many bytes each has at most.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/block.h"

namespace machines {

// Of an ATA or NVMe drive: the log of its self-tests.
inline constexpr std::string_view kSelfTestLog = "SelfTestLog";

// Of an ATA drive: the pages of its device statistics, one after the other.
inline constexpr std::string_view kStatistics = "Statistics";

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

inline constexpr std::string_view kScsiExceptions = "LogPage2F";
inline constexpr std::string_view kScsiSelfTests = "LogPage10";

// The log pages of a SCSI disk, each with its header. They are asked for, and shown, in this order.
inline constexpr std::array kScsiPages = {
    ScsiPage{0x2F, kScsiExceptions}, ScsiPage{0x03, "LogPage03"}, ScsiPage{0x02, "LogPage02"},
    ScsiPage{0x05, "LogPage05"},     ScsiPage{0x0D, "LogPage0D"}, ScsiPage{0x0E, "LogPage0E"},
    ScsiPage{0x10, kScsiSelfTests},  ScsiPage{0x11, "LogPage11"}, ScsiPage{0x15, "LogPage15"}};

inline constexpr std::size_t kNvmeSelfTestLogSize = 564;  // that of ATA is a block

// How many bytes the log of that name has at most. 0: no log has that name.
constexpr std::size_t MaxLogSize(std::string_view name) {
  constexpr std::size_t kPages = 8;
  if (name == kStatistics) return kPages * base::kBlockSize;
  if (name == kSelfTestLog) return kNvmeSelfTestLogSize;
  for (const std::string_view log : {kHealthLog, kIdentifyController, kSense, kDefectListHeader}) {
    if (name == log) return base::kBlockSize;
  }
  for (const ScsiPage& page : kScsiPages) {
    if (name == page.name) return base::kBlockSize;
  }
  return 0;
}

// Whether what the log says changes with time, and it does not keep what it said before.
constexpr bool ChangesWithTime(std::string_view name) {
  return MaxLogSize(name) > 0 && name != kIdentifyController && name != kSense &&
         name != kSelfTestLog && name != kScsiSelfTests;
}

}  // namespace machines
