// The machine of the program smartprobe: the one that it runs on.
#include <csignal>
#include <system_error>

#include "base/standard_streams.h"
#include "machines/linux/sysfs_machine.h"
#include "platform/machine.h"

namespace {

// The probe's first question is the system's version. Nothing is opened or printed before.
// Unlike a tool, smartprobe ends with status 0 also where nobody reads its report to the end.
platform::Machine StartMachine() {
  std::signal(SIGPIPE, SIG_IGN);
  base::PrepareStandardStreams();
  try {
    return machines::ReadLinuxMachine();
  } catch (const std::system_error&) {
    return {};  // its only words are those of a report
  }
}

}  // namespace

// Never destroyed: what the probe does not release may still refer to it.
platform::Machine& platform::ThisMachine() {
  static auto& machine = *new Machine(StartMachine());
  return machine;
}
