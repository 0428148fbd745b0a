#include "machines/linux/scsi_drive.h"

#include <scsi/sg_cmds_basic.h>
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
#include "machines/entries/drive_logs.h"

namespace machines {
namespace {

using platform::Data;
using platform::DriveAnswers;

constexpr bool kNotNoisy = false;
constexpr int kSilent = 0;

// Sends what `send` sends, and once more where the disk only had news of a reset.
template <typename Send>
int Sent(Send send) {
  const int status = send();
  return status == SG_LIB_CAT_UNIT_ATTENTION ? send() : status;
}

// The log page, without what the disk does not send. The status of the library if that fails.
int ReadLogPage(int node, std::uint8_t code, Data& page) {
  constexpr int kCumulativeValues = 1;
  constexpr int kTimeoutSeconds = 20;
  constexpr std::size_t kHeaderSize = 4;
  page.assign(base::kBlockSize, 0);
  int missing = 0;
  const int status = Sent([&] {
    return sg_ll_log_sense_v2(node, false, false, kCumulativeValues, code, 0, 0, page.data(),
                              static_cast<int>(page.size()), kTimeoutSeconds, &missing, kNotNoisy,
                              kSilent);
  });
  if (status != SG_LIB_CAT_CLEAN) return status;
  const std::size_t size = kHeaderSize + static_cast<std::size_t>(page[2] << 8 | page[3]);
  const std::size_t sent = page.size() - static_cast<std::size_t>(std::max(missing, 0));
  page.resize(std::min({size, sent, page.size()}));
  const bool isThePage = page.size() >= kHeaderSize && (page[0] & 0x3F) == code;
  return isThePage ? SG_LIB_CAT_CLEAN : SG_LIB_CAT_MALFORMED;
}

bool IsRefusal(int status) {
  return status == SG_LIB_CAT_INVALID_OP || status == SG_LIB_CAT_ILLEGAL_REQ ||
         status == SG_LIB_CAT_ILLEGAL_REQ_WITH_INFO;
}

// Empty if the disk does not answer.
Data ReadSense(int node) {
  Data sense(18);  // a longer answer ends in what is not looked at
  const int status = Sent([&] {
    return sg_ll_request_sense(node, false, sense.data(), static_cast<int>(sense.size()), kNotNoisy,
                               kSilent);
  });
  if (status != SG_LIB_CAT_CLEAN) sense.clear();
  return sense;
}

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
  const int status = Sent([&] {
    return sg_ll_read_defect10(node, false, true, kBytesFromIndex, header.data(),
                               static_cast<int>(header.size()), kNotNoisy, kSilent);
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
    } else if (!IsRefusal(status)) {
      return "LOG SENSE failed for " + std::string(name);
    }
  }
  return "";
}

DriveAnswers Ask(int node) {
  constexpr std::string_view kExceptions = "LogPage2F";
  Data list;
  const int status = ReadLogPage(node, 0, list);
  if (IsRefusal(status)) return {};
  if (status != SG_LIB_CAT_CLEAN) return NotAnswered("LOG SENSE failed");
  DriveAnswers answers;
  answers.whyNotOpened = AddPages(node, list, answers);
  if (!answers.whyNotOpened.empty()) return answers;
  if (!answers.logs.contains(kExceptions)) {
    Data sense = ReadSense(node);
    if (!sense.empty()) answers.logs.emplace(kSense, std::move(sense));
  }
  if (Data header = ReadDefectListHeader(node); !header.empty()) {
    answers.logs.emplace(kDefectListHeader, std::move(header));
  }
  answers.date = base::Now();
  return answers;
}

DriveAnswers AskUnlessAsleep(int node, const std::string& identity, const KeptAnswers& kept) {
  if (kept && IsAsleep(ReadSense(node))) {
    if (auto answers = kept(identity)) return *answers;
  }
  return Ask(node);
}

}  // namespace

platform::Drive MakeScsiDrive(ScsiNode node, KeptAnswers kept) {
  return [node = std::move(node), kept = std::move(kept)] {
    return AskNode(node.node,
                   [&](int opened) { return AskUnlessAsleep(opened, node.identity, kept); });
  };
}

}  // namespace machines
