#include "machines/linux/ata_drive.h"

#include <cstdint>
#include <string>
#include <utility>

#include "base/dates.h"
#include "drives/attribute_blocks.h"
#include "drives/identify_data.h"
#include "machines/linux/ata_commands.h"
#include "machines/linux/ata_logs.h"

namespace machines {
namespace {

using base::Block;
using platform::DriveAnswers;

constexpr AtaRegisters kCheckPowerMode = {.command = 0xE5};
constexpr AtaRegisters kReadThresholds = SMARTCommand(0xD1);
constexpr AtaRegisters kReturnStatus = SMARTCommand(0xDA);

platform::BlockAnswer Given(const Block& block) {
  return {platform::Data(block.begin(), block.end()), true};
}

// The kept answers of the drive, if it sleeps and there are any. If it had to be asked for its
// IDENTIFY DEVICE data, they are left in `identify`.
std::optional<DriveAnswers> AnswersOfSleeper(int node, const std::optional<Block>& known,
                                             const KeptAnswers& kept,
                                             std::optional<Block>& identify) {
  if (!kept || !IsInStandby(SendCommand(node, kCheckPowerMode, Registers::kWanted))) return {};
  if (known) return kept(drives::Identity(*known));
  identify = ReadAnswer(node, kIdentifyDevice);
  return identify ? kept(drives::Identity(*identify)) : std::nullopt;
}

// Asks the drive of an open node what a report takes, up to the first failure. `identify` are its
// IDENTIFY DEVICE data if it has been asked for them.
DriveAnswers AskForReport(int node, std::optional<Block> identify) {
  DriveAnswers told;
  const auto failed = [&told](const char* why) {
    told.whyNotOpened = why;
    return told;
  };
  if (!identify) identify = ReadAnswer(node, kIdentifyDevice);
  if (!identify) return failed("IDENTIFY DEVICE failed");
  drives::MakePrintable(*identify);
  told.identify = Given(*identify);
  told.enables = !drives::LacksSMART(*identify);
  told.date = base::Now();
  if (!told.enables) return told;

  const CommandEnd enabling = SendCommand(node, kEnableOperations).end;
  if (enabling != CommandEnd::kSucceeded) return failed("S.M.A.R.T. cannot be enabled");

  const CommandResult condition = SendCommand(node, kReturnStatus, Registers::kWanted);
  const StatusAnswer status = ParseReturnStatus(condition);
  if (status == StatusAnswer::kNone) return failed("SMART RETURN STATUS gave no answer");
  if (status != StatusAnswer::kUnsaid) told.exceeded = status == StatusAnswer::kExceeded;

  const std::optional<Block> data = ReadAnswer(node, kReadData);
  if (!data) return failed("SMART READ DATA failed");
  told.data = Given(*data);

  // Newer drives may have no thresholds and refuse the command. A drive that is gone does not
  // refuse it but fails.
  const BlockResult thresholds = ReadBlock(node, kReadThresholds);
  if (thresholds.end == CommandEnd::kFailed) return failed("SMART READ THRESHOLDS failed");
  if (thresholds.block) told.thresholds = Given(*thresholds.block);
  if (status == StatusAnswer::kUnsaid && thresholds.block) {
    told.exceeded = drives::ExceededCondition(*data, *thresholds.block);
  }
  if (told.exceeded) return told;
  return failed("SMART RETURN STATUS gave no registers, and no thresholds tell");
}

DriveAnswers Ask(int opened, const AtaNode& node, const KeptAnswers& kept) {
  std::optional<Block> identify;
  if (auto answers = AnswersOfSleeper(opened, node.identify, kept, identify)) return *answers;
  return AskForReport(opened, identify);
}

}  // namespace

platform::Drive MakeAtaDrive(AtaNode node, KeptAnswers kept) {
  return [node = std::move(node), kept = std::move(kept)] {
    return AskNode(node.node, [&](int opened) { return Ask(opened, node, kept); });
  };
}

void AddAtaLogs(const DiskNode& node, DriveAnswers& answers) {
  if (!answers.whyNotOpened.empty() || !answers.data.succeeds) return;
  const base::Descriptor opened = OpenNode(node, answers.whyNoLogs);
  if (!opened.IsOpen()) return;
  const platform::BlockAnswer& before =
      answers.thresholds.succeeds ? answers.thresholds : answers.data;
  answers.logs = ReadAtaLogs(opened.Number(), *answers.identify.Block(), *before.Block());
}

}  // namespace machines
