#include "machines/linux/scsi_drive.h"

#include <scsi/sg_cmds_extra.h>
#include <scsi/sg_lib.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "base/block.h"
#include "base/dates.h"
#include "drives/scsi_logs.h"
#include "machines/entries/drive_logs.h"
#include "machines/linux/scsi_commands.h"

namespace machines {
namespace {

using platform::Data;
using platform::DriveAnswers;

// Whether the sense data say that the disk is stopped, or in a power condition from which it would
// have to spin up. In an idle one it spins.
bool IsAsleep(const Data& sense) {
  constexpr std::uint8_t kNotReady = 0x02;
  constexpr std::uint8_t kPowerCondition = 0x5E;
  constexpr std::array<std::uint8_t, 5> kAsleep = {0x00, 0x02, 0x04, 0x09, 0x0A};
  sg_scsi_sense_hdr header{};
  if (!sg_scsi_normalize_sense(sense.data(), static_cast<int>(sense.size()), &header)) return false;
  const bool isStopped = header.sense_key == kNotReady && header.asc == 0x04 && header.ascq == 0x02;
  return isStopped || (header.asc == kPowerCondition &&
                       std::ranges::find(kAsleep, header.ascq) != kAsleep.end());
}

// The header of the grown list alone, which has its length. Empty if the disk does not send it.
Data ReadDefectListHeader(int node) {
  constexpr int kBytesFromIndex = 4;
  Data header(4);
  const int status = SendScsi([&] {
    return sg_ll_read_defect10(node, false, true, kBytesFromIndex, header.data(),
                               static_cast<int>(header.size()), false, 0);
  });
  const bool isSent = status == SG_LIB_CAT_CLEAN || status == SG_LIB_CAT_RECOVERED;
  const bool isGrownList = (header[1] & 0x08) != 0;
  if (!isSent || !isGrownList) header.clear();
  return header;
}

// Adds the pages that the list names. Returns what failed, or an empty text.
std::string AddPages(int node, const Data& list, DriveAnswers& answers) {
  for (const auto& [code, name] : kScsiPages) {
    if (std::find(list.begin() + 4, list.end(), code) == list.end()) continue;
    Data page;
    const int status = ReadLogPage(node, code, page);
    if (status == SG_LIB_CAT_CLEAN) {
      answers.logs.emplace(name, std::move(page));
    } else if (!IsScsiRefusal(status) && status != SG_LIB_CAT_MALFORMED) {
      return "LOG SENSE failed for " + std::string(name);
    }
  }
  return "";
}

// `sense` is what the disk has said before, if it was asked: an exception is said only once.
DriveAnswers Ask(int node, bool isOnUSB, Data sense) {
  Data list;
  const int status = ReadLogPage(node, 0, list);
  if (IsScsiRefusal(status) || (status != SG_LIB_CAT_CLEAN && isOnUSB)) return {};
  if (status != SG_LIB_CAT_CLEAN) return NotAnswered("LOG SENSE failed");
  DriveAnswers answers;
  answers.whyNotOpened = AddPages(node, list, answers);
  if (!answers.whyNotOpened.empty()) return answers;
  if (!answers.logs.contains(kScsiExceptions)) {
    if (!drives::TellsException(sense)) sense = ReadSense(node);
    if (!sense.empty()) answers.logs.emplace(kSense, std::move(sense));
  }
  if (Data header = ReadDefectListHeader(node); !header.empty()) {
    answers.logs.emplace(kDefectListHeader, std::move(header));
  }
  answers.date = base::Now();
  return answers;
}

DriveAnswers AskUnlessAsleep(int opened, const ScsiNode& node, const KeptAnswers& kept) {
  if (!kept) return Ask(opened, node.isOnUSB, {});
  Data sense = ReadSense(opened);
  if (IsAsleep(sense)) {
    if (auto answers = kept(node.identity)) return *answers;
  }
  return Ask(opened, node.isOnUSB, std::move(sense));
}

}  // namespace

platform::Drive MakeScsiDrive(ScsiNode node, KeptAnswers kept) {
  return [node = std::move(node), kept = std::move(kept)] {
    return AskNode(node.node, [&](int opened) { return AskUnlessAsleep(opened, node, kept); });
  };
}

}  // namespace machines
