#include "machines/recorded/record_drive.h"

#include <optional>
#include <utility>

#include "machines/recorded/keys.h"

namespace machines {
namespace {

using platform::Drive;

void Put(platform::Dictionary& answers, std::string_view key, platform::Property value) {
  answers.push_back({std::string(key), std::move(value)});
}

void PutBlock(DriveRecording& recording, std::string_view key, const char* command,
              const std::optional<Drive::Block>& block) {
  if (block) {
    Put(recording.answers, key, {platform::Data(block->begin(), block->end())});
  } else {
    recording.failures.push_back(std::string(command) + " failed");
  }
}

void RecordAnswers(Drive& drive, DriveRecording& recording) {
  if (const std::optional<bool> exceeded = drive.ReturnStatus()) {
    Put(recording.answers, kExceededKey, {*exceeded});
  } else {
    recording.failures.emplace_back("SMART RETURN STATUS failed");
  }
  PutBlock(recording, kDataKey, "SMART READ DATA", drive.ReadData());
  PutBlock(recording, kThresholdsKey, "SMART READ THRESHOLDS", drive.ReadThresholds());
  PutBlock(recording, kIdentifyKey, "IDENTIFY DEVICE", drive.Identify());
}

}  // namespace

DriveRecording RecordDrive(Drive& drive) {
  DriveRecording recording;
  const bool isOpen = drive.Open();
  const bool isEnabled = isOpen && drive.Enable(true);
  RecordAnswers(drive, recording);
  if (!isOpen) {
    Put(recording.answers, kQueryFailsKey, {true});
    recording.failures = {drive.OpenFailure()};
  } else if (!isEnabled) {
    Put(recording.answers, kEnableFailsKey, {true});
    recording.failures = {"S.M.A.R.T. cannot be enabled"};
  }
  return recording;
}

}  // namespace machines
