#include "machines/linux/nvme_drive.h"

#include <linux/nvme_ioctl.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "base/block.h"
#include "base/dates.h"
#include "drives/nvme_logs.h"
#include "machines/entries/drive_logs.h"

namespace machines {
namespace {

using platform::Data;
using platform::DriveAnswers;

struct Command {
  std::uint8_t operation;
  std::uint32_t namespaces;
  std::uint32_t word10;
};

constexpr std::size_t kLogSize = base::kBlockSize;
constexpr std::size_t kControllerSize = 4096;

// Of all namespaces. The command counts in words of 4 bytes, from 0.
constexpr Command kGetHealthLog = {0x02, 0xFFFFFFFF, 0x02 | (kLogSize / 4 - 1) << 16};
constexpr Command kGetSelfTestLog = {0x02, 0xFFFFFFFF, 0x06 | (kNvmeSelfTestLogSize / 4 - 1) << 16};
constexpr Command kIdentify = {0x06, 0, 0x01};

// Fills `data`. Returns why it cannot, in words, or an empty text.
std::string Send(int node, const Command& sent, std::span<std::uint8_t> data) {
  constexpr std::uint32_t kTimeout = 20'000;  // in milliseconds
  nvme_admin_cmd command{};
  command.opcode = sent.operation;
  command.nsid = sent.namespaces;
  command.addr = reinterpret_cast<std::uintptr_t>(data.data());
  command.data_len = static_cast<std::uint32_t>(data.size());
  command.cdw10 = sent.word10;
  command.timeout_ms = kTimeout;
  const int status = ioctl(node, NVME_IOCTL_ADMIN_CMD, &command);
  if (status == 0) return "";
  if (status > 0) return "the drive refused, NVMe status " + std::to_string(status);
  const bool isForbidden = errno == EACCES || errno == EPERM;
  return std::string(strerror(errno)) + (isForbidden ? " (run as root)" : "");
}

DriveAnswers Ask(int node) {
  Data log(kLogSize);
  const std::string why = Send(node, kGetHealthLog, log);
  if (!why.empty()) return NotAnswered("cannot read its health log: " + why);
  if (log == Data(kLogSize)) return NotAnswered("its health log is empty");
  DriveAnswers answers;
  answers.date = base::Now();
  answers.logs.emplace(kHealthLog, std::move(log));
  Data controller(kControllerSize);
  if (!Send(node, kIdentify, controller).empty()) return answers;
  controller.resize(base::kBlockSize);
  Data selfTests(kNvmeSelfTestLogSize);
  if (drives::HasNVMeSelfTests(controller) && Send(node, kGetSelfTestLog, selfTests).empty()) {
    answers.logs.emplace(kSelfTestLog, std::move(selfTests));
  }
  answers.logs.emplace(kIdentifyController, std::move(controller));
  return answers;
}

}  // namespace

platform::Drive MakeNvmeDrive(DiskNode node) {
  return [node = std::move(node)] { return AskNode(node, Ask); };
}

}  // namespace machines
