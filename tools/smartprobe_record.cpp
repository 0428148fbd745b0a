// smartprobe-record: this host as a recorded machine.
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <new>
#include <optional>
#include <string>

#include "machines/linux/sysfs_machine.h"
#include "machines/recorded/listing.h"
#include "machines/recorded/mask_serials.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/record_drive.h"
#include "machines/standard_streams.h"
#include "tools/command_line.h"
#include "tools/output_file.h"
#include "tools/standard_streams.h"

namespace {

constexpr const char* kProgram = "smartprobe-record";

// The name of the medium below a device, such as "sda".
std::string DiskName(const platform::Entry& device) {
  for (const platform::Entry& medium : device.children) {
    const platform::Property* name = platform::Find(medium.properties, "BSD Name");
    const auto* text = name ? std::get_if<std::string>(&name->value) : nullptr;
    if (text) return *text;
  }
  return device.name;
}

// A drive that does not answer is no failure of the recording: it is recorded so.
platform::Dictionary Record(const platform::Entry& device) {
  const std::string disk = DiskName(device);
  if (isatty(STDERR_FILENO) != 0) std::fprintf(stderr, "Reading %s\n", disk.c_str());
  machines::DriveRecording recording = machines::RecordDrive(*device.drive);
  for (const std::string& failure : recording.failures) {
    tools::PrintError(kProgram, std::string(disk).append(": ").append(failure));
  }
  return std::move(recording.answers);
}

void RecordHost(const std::string& file, bool masksSerials) {
  tools::CheckOutputFile(file);  // before any drive is woken for nothing
  platform::Property listing = machines::ListingOf(machines::ReadLinuxMachine(), Record);
  if (masksSerials) machines::MaskSerials(listing);
  tools::WriteOutputFile(file, machines::WritePropertyList(listing));
}

int Run(const std::string& file, bool masksSerials) {
  try {
    RecordHost(file, masksSerials);
    return 0;
  } catch (const std::bad_alloc&) {
    tools::PrintError(kProgram, "out of memory");
  } catch (const std::exception& error) {
    tools::PrintError(kProgram, file + ": " + error.what());
  }
  return tools::kFailureStatus;
}

}  // namespace

int main(int argc, char** argv) try {
  machines::PrepareStandardStreams();
  CLI::App app("Writes the drives of this host as a recorded machine.", kProgram);
  std::string file;
  bool masksSerials = false;
  app.add_option("FILE", file, "The property list to write")->required();
  app.add_flag("--no-serials", masksSerials,
               "Put X in the place of serial numbers, for a file that others may see");
  if (const std::optional<int> status = tools::ParseCommandLine(app, argc, argv)) return *status;
  return Run(file, masksSerials);
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s: %s\n", kProgram, error.what());
  return tools::kFailureStatus;
}
