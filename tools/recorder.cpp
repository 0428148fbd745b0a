#include "tools/recorder.h"

#include <chrono>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "base/files.h"
#include "base/numbers.h"
#include "base/printable_text.h"
#include "base/standard_streams.h"
#include "machines/entries/device_entries.h"
#include "machines/recorded/mask_serials.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/write_recording.h"
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
     {"no-serials", nullptr, "Replace serial numbers by X, for a file that others may see"}},
    "The property list to write; - is standard output",
    true};

// A drive that does not answer is no failure of the recording: it is recorded so.
platform::Dictionary Record(const platform::Entry& device) {
  const platform::DriveAnswers answers = device.drive();
  std::vector<std::string> failures;
  if (device.className != machines::kOtherDiskClass) {
    failures = machines::FailuresOf(answers);
  } else if (!answers.whyNotOpened.empty()) {
    failures = {answers.whyNotOpened};
  }
  for (const std::string& failure : failures) {
    base::PrintError(kCommandLine.program,
                     std::string(machines::DiskName(device)).append(": ").append(failure));
  }
  return machines::RecordDrive(answers);
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

// 0: no drive may sleep on.
int DaysOfSleep(const Arguments& arguments) {
  if (!arguments.Has("let-sleep")) return 0;
  const auto days = base::ParseNumber<int>(arguments.options.at("let-sleep"), 10);
  if (!days || *days < 1 || *days > 365) {
    throw UsageError("--let-sleep needs a number of days from 1 to 365");
  }
  if (base::IsStandardStream(*arguments.file)) {
    throw UsageError("--let-sleep needs a FILE that can be read");
  }
  return *days;
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

int RecordHost(const Arguments& arguments, const HostFolders& folders) {
  const std::string& file = *arguments.file;
  const int days = DaysOfSleep(arguments);
  CheckOutputFile(file);  // before any drive is woken for nothing
  machines::KeptAnswers kept;
  if (days > 0) kept = ReadKeptAnswers(kCommandLine.program, file, days);
  platform::Machine machine = AskHost(folders, kept);
  DropUnwritableDate(machine);
  platform::Property listing = machines::ListingOf(machine, Record);
  PrintDisksNotRead(machine);
  if (arguments.Has("no-serials")) machines::MaskSerials(listing);
  WriteOutputFile(file, machines::WritePropertyList(listing));
  return 0;
}

}  // namespace

int RunRecorder(int argc, char** argv, const HostFolders& folders) {
  return RunProgram(kCommandLine, argc, argv, [&folders](const Arguments& arguments) {
    return RecordHost(arguments, folders);
  });
}

}  // namespace tools
