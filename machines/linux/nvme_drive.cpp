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
  return answers;
}

}  // namespace

platform::Drive MakeNvmeDrive(DiskNode node) {
  return [node = std::move(node)] { return AskNode(node, Ask); };
}

void AddNvmeLogs(const DiskNode& node, DriveAnswers& answers) {
  if (!answers.whyNotOpened.empty()) return;
  const base::Descriptor opened = OpenNode(node, answers.whyNoLogs);
  Data controller(kControllerSize);
  if (!opened.IsOpen()) return;
  if (!SendNvme(opened.Number(), kIdentifyNvmeController, controller).empty()) return;
  controller.resize(base::kBlockSize);
  if (drives::HasNVMeSelfTests(controller)) {
    Data tests(kNvmeSelfTestLogSize);
    const NvmeCommand command = GetNvmeLog(kNvmeSelfTestPage, tests.size());
    const bool isSent = SendNvme(opened.Number(), command, tests).empty();
    if (isSent) answers.logs.emplace(kSelfTestLog, std::move(tests));
  }
  answers.logs.emplace(kIdentifyController, std::move(controller));
}

}  // namespace machines
