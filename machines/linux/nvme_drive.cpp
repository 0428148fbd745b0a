#include "machines/linux/nvme_drive.h"

#include <string>
#include <utility>

#include "base/block.h"
#include "base/dates.h"
#include "drives/nvme_logs.h"
#include "machines/entries/drive_logs.h"
#include "machines/linux/nvme_commands.h"

namespace machines {
namespace {

using platform::Data;
using platform::DriveAnswers;

DriveAnswers Ask(int node) {
  Data log(base::kBlockSize);
  const std::string why = SendNvme(node, GetNvmeLog(kNvmeHealthPage, log.size()), log);
  if (!why.empty()) return NotAnswered("cannot read its health log: " + why);
  if (log == Data(log.size())) return NotAnswered("its health log is empty");
  DriveAnswers answers;
  answers.date = base::Now();
  answers.logs.emplace(kHealthLog, std::move(log));
  Data controller(kControllerSize);
  if (!SendNvme(node, kIdentifyNvmeController, controller).empty()) return answers;
  controller.resize(base::kBlockSize);
  if (drives::HasNVMeSelfTests(controller)) {
    Data tests(kNvmeSelfTestLogSize);
    const bool isSent = SendNvme(node, GetNvmeLog(kNvmeSelfTestPage, tests.size()), tests).empty();
    if (isSent) answers.logs.emplace(kSelfTestLog, std::move(tests));
  }
  answers.logs.emplace(kIdentifyController, std::move(controller));
  return answers;
}

}  // namespace

platform::Drive MakeNvmeDrive(DiskNode node) {
  return [node = std::move(node)] { return AskNode(node, Ask); };
}

}  // namespace machines
