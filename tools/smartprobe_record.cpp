// smartprobe-record: this host as a recorded machine.
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "base/files.h"
#include "base/numbers.h"
#include "base/printable_text.h"
#include "base/standard_streams.h"
#include "machines/disks/disk_entries.h"
#include "machines/linux/sysfs_machine.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/write_recording.h"
#include "tools/kept_answers.h"
#include "tools/mask_serials.h"
#include "tools/output_file.h"
#include "tools/program.h"

namespace {

const tools::CommandLine kCommandLine = {
    "smartprobe-record",
    "Writes the drives of this host as a recorded machine.",
    {{"let-sleep", "DAYS",
      "Wake no drive whose answers stand in FILE from the last DAYS days, 1 to 365"},
     {"no-serials", nullptr,
      "Put X in the place of serial numbers, for a file that others may see"}},
    "The property list to write; - is standard output",
    true};

// A drive that does not answer is no failure of the recording: it is recorded so.
platform::Dictionary Record(const platform::Entry& device) {
  machines::DriveRecording recording = machines::RecordDrive(device.drive());
  for (const std::string& failure : recording.failures) {
    base::PrintError(kCommandLine.program, machines::DiskName(device).append(": ").append(failure));
  }
  return std::move(recording.answers);
}

// "a, b"
std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    text.append(text.empty() ? "" : ", ").append(base::PrintableASCII(name));
  }
  return text;
}

// One line of a terminal that each call writes over, and the last one clears.
void ShowProgress(std::size_t drives, const std::vector<std::string>& awaited) {
  std::string line = std::to_string(drives - awaited.size()) + " of " + std::to_string(drives) +
                     " drives have answered; waiting for " + Joined(awaited);
  if (awaited.empty()) line.clear();
  std::fprintf(stderr, "\r%-78.78s\r", line.c_str());
}

// What nobody looks at is told, or nothing would tell of it.
void TellOfDisksNotRead(const platform::Machine& machine) {
  std::vector<std::string> others;
  std::vector<std::string> without;
  for (const platform::Entry& device : machine.roots.front().children) {
    if (device.drive) continue;
    (device.className == machines::kOtherDiskClass ? others : without)
        .push_back(machines::DiskName(device));
  }
  if (!others.empty())
    base::PrintError(kCommandLine.program, "not ATA, not read: " + Joined(others));
  if (!without.empty()) {
    base::PrintError(kCommandLine.program, "without S.M.A.R.T., not read: " + Joined(without));
  }
}

// 0: no drive may sleep on.
int DaysOfSleep(const tools::Arguments& arguments) {
  if (!arguments.Has("let-sleep")) return 0;
  const auto days = base::ParseNumber<int>(arguments.options.at("let-sleep"), 10);
  if (!days || *days < 1 || *days > 365) {
    throw tools::UsageError("--let-sleep needs a number of days from 1 to 365");
  }
  if (base::IsStandardStream(*arguments.file)) {
    throw tools::UsageError("--let-sleep needs a FILE that can be read");
  }
  return *days;
}

int RecordHost(const tools::Arguments& arguments) {
  const std::string& file = *arguments.file;
  machines::Asking asking;
  const int days = DaysOfSleep(arguments);
  tools::CheckOutputFile(file);  // before any drive is woken for nothing
  if (days > 0) asking.kept = tools::ReadKeptAnswers(kCommandLine.program, file, days);
  if (isatty(STDERR_FILENO) != 0) asking.progress = ShowProgress;
  const platform::Machine machine = machines::ReadLinuxMachine("/sys", "/dev", asking);
  platform::Property listing = machines::ListingOf(machine, Record);
  TellOfDisksNotRead(machine);
  if (arguments.Has("no-serials")) tools::MaskSerials(listing);
  tools::WriteOutputFile(file, machines::WritePropertyList(listing));
  return 0;
}

}  // namespace

int main(int argc, char** argv) { return tools::RunProgram(kCommandLine, argc, argv, RecordHost); }
