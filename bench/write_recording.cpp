// write_recording DRIVES: prints the recording of a machine with that many drives, for measuring.
#include "machines/recorded/write_recording.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/machines.h"
#include "machines/recorded/property_list.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const platform::Property listing = machines::ListingOf(
      bench::MachineOf(std::atoi(argv[1])),
      [](const platform::Entry& entry) { return machines::RecordDrive(entry.drive()); });
  const std::string text = machines::WritePropertyList(listing);
  return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() ? 0 : 1;
}
