#include "machines/linux/scsi_commands.h"

#include <scsi/sg_cmds_basic.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "base/block.h"
#include "drives/scsi_logs.h"

namespace machines {
namespace {

using platform::Data;

constexpr bool kNotNoisy = false;
constexpr int kSilent = 0;

}  // namespace

int ReadLogPage(int node, std::uint8_t code, Data& page) {
  constexpr int kCumulativeValues = 1;
  constexpr int kTimeoutSeconds = 20;
  constexpr std::size_t kHeaderSize = 4;
  page.assign(base::kBlockSize, 0);
  int missing = 0;
  const int status = SendScsi([&] {
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

bool IsScsiRefusal(int status) {
  return status == SG_LIB_CAT_INVALID_OP || status == SG_LIB_CAT_ILLEGAL_REQ ||
         status == SG_LIB_CAT_ILLEGAL_REQ_WITH_INFO;
}

Data ReadSense(int node) {
  constexpr std::uint8_t kUnitAttention = 0x06;
  Data sense(18);  // a longer answer ends in what is not looked at
  const auto read = [&] {
    return sg_ll_request_sense(node, false, sense.data(), static_cast<int>(sense.size()), kNotNoisy,
                               kSilent);
  };
  int status = SendScsi(read);
  // That of a reset hides what the disk would say.
  const int key = sg_get_sense_key(sense.data(), static_cast<int>(sense.size()));
  if (status == SG_LIB_CAT_CLEAN && key == kUnitAttention && !drives::TellsException(sense)) {
    status = SendScsi(read);
  }
  if (status != SG_LIB_CAT_CLEAN) sense.clear();
  return sense;
}

void ClearLibraryEnvironment() {
  unsetenv("SG3_UTILS_DSENSE");
  unsetenv("SG3_UTILS_LINUX_NANO");
}

}  // namespace machines
