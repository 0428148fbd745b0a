#include "tools/recorder.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "base/dates.h"
#include "base/files.h"
#include "base/numbers.h"
#include "base/printable_text.h"
#include "base/standard_streams.h"
#include "machines/entries/device_entries.h"
#include "machines/recorded/mask_serials.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/read_recording.h"
#include "machines/recorded/recording_files.h"
#include "machines/recorded/recording_format.h"
#include "machines/recorded/write_recording.h"
#include "tools/history.h"
#include "tools/kept_answers.h"
#include "tools/output_file.h"
#include "tools/program.h"

namespace tools {
namespace {

const CommandLine kCommandLine = {
    "smartprobe-record",
    "Writes the drives of this host as a recorded machine.",
    {{"let-sleep", "DAYS",
      "Do not wake a drive that FILE already holds answers for from the last DAYS days, 1 to 365"},
     {"history", "DAYS", "Keep in FILE what its drives answered in the last DAYS days, 1 to 3650"},
     {"no-serials", nullptr, "Replace serial numbers by X, for a file that others may see"}},
    "The property list to write; - is standard output",
    true};

// A drive that does not answer is no failure of the recording: it is recorded so.
void PrintFailures(const std::vector<platform::Entry>& devices) {
  for (const platform::Entry& device : devices) {
    if (!device.drive) continue;
    const platform::DriveAnswers answers = device.drive();
    std::vector<std::string> failures;
    if (device.className != machines::kOtherDiskClass) {
      failures = machines::FailuresOf(answers);
    } else if (!answers.whyNotOpened.empty()) {
      failures = {answers.whyNotOpened};
    }
    if (!answers.whyNoLogs.empty()) failures.push_back("logs not read: " + answers.whyNoLogs);
    for (const std::string& failure : failures) {
      base::PrintError(kCommandLine.program,
                       std::string(machines::DiskName(device)).append(": ").append(failure));
    }
  }
}

// "a, b"
std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    text.append(text.empty() ? "" : ", ").append(base::PrintableASCII(name));
  }
  return text;
}

// The recorder is the only one to mention them.
void PrintDisksNotRead(const platform::Machine& machine) {
  std::vector<std::string> others;
  std::vector<std::string> without;
  for (const platform::Entry& device : machine.roots.front().children) {
    if (device.drive) continue;
    (device.className == machines::kOtherDiskClass ? others : without)
        .emplace_back(machines::DiskName(device));
  }
  if (!others.empty()) base::PrintError(kCommandLine.program, "not asked: " + Joined(others));
  if (!without.empty()) {
    base::PrintError(kCommandLine.program, "without S.M.A.R.T., not read: " + Joined(without));
  }
}

// The value of an option that needs the old FILE. 0: it was not given.
int DaysOf(const Arguments& arguments, const std::string& option, int most) {
  if (!arguments.Has(option)) return 0;
  const auto days = base::ParseNumber<int>(arguments.options.at(option), 10);
  if (!days || *days < 1 || *days > most) {
    throw UsageError("--" + option + " needs a number of days from 1 to " + std::to_string(most));
  }
  if (base::IsStandardStream(*arguments.file)) {
    throw UsageError("--" + option + " needs a FILE that can be read");
  }
  return *days;
}

// The recording that is replaced.
struct OldRecording {
  platform::Machine machine = {};
  bool isUnreadable = false;
};

OldRecording ReadOld(const std::string& file) {
  std::error_code error;
  if (!std::filesystem::exists(file, error) && !error) return {};
  try {
    return {machines::ReadRecordingFile(file)};
  } catch (const std::runtime_error& failure) {
    base::PrintError(kCommandLine.program, failure.what());
    return {.isUnreadable = true};
  }
}

// Its history may still be saved by hand.
void PutAside(const std::string& file) {
  std::string aside = file + ".unreadable";
  for (int number = 2; std::filesystem::exists(aside); number++) {
    aside = file + ".unreadable" + std::to_string(number);
  }
  std::filesystem::rename(file, aside);
  base::PrintError(kCommandLine.program, file + " is now " + aside + ": the history begins anew");
}

// A clock may be wrong, which is no reason not to record.
void DropUnwritableDate(platform::Machine& machine) {
  auto& host =
      std::get<platform::Dictionary>(machine.roots.front().properties.at(machines::kHostKey).value);
  const auto date = host.find(machines::kHostDateKey);
  if (!machines::IsWritableDate(std::get<std::chrono::sys_seconds>(date->second.value))) {
    host.erase(date);
  }
}

std::string RecordingOf(const platform::Machine& machine, bool masks) {
  platform::Property listing = machines::ListingOf(
      machine, [](const platform::Entry& device) { return machines::RecordDrive(device.drive()); });
  if (masks) machines::MaskSerials(listing);
  return machines::WritePropertyList(listing);
}

// Whether the reader's limits allow it. A small recording is far from them.
bool CanBeRead(const std::string& recording) {
  constexpr std::size_t kSmall = machines::kMaxRecordingSize / 16;
  if (recording.size() <= kSmall) return true;
  try {
    machines::ReadRecording(recording);
    return true;
  } catch (const machines::RecordingError&) {
    return false;
  }
}

// The recording with the history of so many days, or of as many of them as its reader can hold.
std::string RecordingWithHistory(const platform::Machine& machine, const platform::Machine& before,
                                 HistoryRules rules) {
  while (true) {
    platform::Machine whole = machine;
    AddHistory(whole, before, rules);
    std::string recording = RecordingOf(whole, rules.areSerialsMasked);
    if (CanBeRead(recording) || rules.kept.count() == 0) return recording;
    rules.kept /= 2;
    base::PrintError(kCommandLine.program,
                     "a history as long as that is too large; it keeps the last " +
                         std::to_string(rules.kept.count()) + " days");
  }
}

int RecordHost(const Arguments& arguments, const HostFolders& folders) {
  const std::string& file = *arguments.file;
  const int sleep = DaysOf(arguments, "let-sleep", 365);
  const std::chrono::days history(DaysOf(arguments, "history", 3650));
  const bool masks = arguments.Has("no-serials");
  CheckOutputFile(file);  // before any drive is woken for nothing
  machines::KeptAnswers kept;
  if (sleep > 0) kept = ReadKeptAnswers(kCommandLine.program, file, sleep);
  platform::Machine machine = AskHost(folders, kept);
  DropUnwritableDate(machine);
  PrintFailures(machine.roots.front().children);
  PrintDisksNotRead(machine);
  const OldRecording old = history.count() > 0 ? ReadOld(file) : OldRecording();
  const std::string recording =
      history.count() == 0
          ? RecordingOf(machine, masks)
          : RecordingWithHistory(machine, old.machine, {base::Now(), history, masks});
  if (old.isUnreadable) PutAside(file);
  WriteOutputFile(file, recording);
  return 0;
}

}  // namespace

int RunRecorder(int argc, char** argv, const HostFolders& folders) {
  return RunProgram(kCommandLine, argc, argv, [&folders](const Arguments& arguments) {
    return RecordHost(arguments, folders);
  });
}

}  // namespace tools
