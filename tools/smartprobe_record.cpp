// smartprobe-record: this host as a recorded machine.
#include <unistd.h>

#include <cstdio>
#include <string>
#include <utility>

#include "base/standard_streams.h"
#include "machines/linux/sysfs_machine.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/write_recording.h"
#include "tools/mask_serials.h"
#include "tools/output_file.h"
#include "tools/program.h"

namespace {

const tools::CommandLine kCommandLine = {
    "smartprobe-record",
    "Writes the drives of this host as a recorded machine.",
    {{"no-serials", nullptr,
      "Put X in the place of serial numbers, for a file that others may see"}},
    "The property list to write; - is standard output",
    true};

// The name of the medium below a device, such as "sda".
std::string DiskName(const platform::Entry& device) {
  for (const platform::Entry& medium : device.children) {
    if (const std::string* name = platform::FindText(medium.properties, "BSD Name")) return *name;
  }
  return device.name;
}

// A drive that does not answer is no failure of the recording: it is recorded so.
platform::Dictionary Record(const platform::Entry& device) {
  const std::string disk = DiskName(device);
  if (isatty(STDERR_FILENO) != 0) std::fprintf(stderr, "Reading %s\n", disk.c_str());
  machines::DriveRecording recording = machines::RecordDrive(device.drive());
  for (const std::string& failure : recording.failures) {
    base::PrintError(kCommandLine.program, std::string(disk).append(": ").append(failure));
  }
  return std::move(recording.answers);
}

int RecordHost(const tools::Arguments& arguments) {
  tools::CheckOutputFile(*arguments.file);  // before any drive is woken for nothing
  platform::Property listing = machines::ListingOf(machines::ReadLinuxMachine(), Record);
  if (arguments.Has("no-serials")) tools::MaskSerials(listing);
  tools::WriteOutputFile(*arguments.file, machines::WritePropertyList(listing));
  return 0;
}

}  // namespace

int main(int argc, char** argv) { return tools::RunProgram(kCommandLine, argc, argv, RecordHost); }
