// What smartprobe has beside the probe: the machine that it runs on, this host.
#include <csignal>
#include <system_error>

#include "base/standard_streams.h"
#include "machines/linux/host_machine.h"
#include "platform/machine.h"

namespace {

// Called for the probe's first question, the system's version. Nothing is opened or printed before.
// Unlike a tool, smartprobe ends with status 0 also where nobody reads its report to the end.
platform::Machine ReadThisHost() {
  std::signal(SIGPIPE, SIG_IGN);
  base::PrepareStandardStreams();
  try {
    return machines::AskDisks(machines::ListDisks(machines::kSysfs), machines::kDev);
  } catch (const std::system_error&) {
    return {};  // its only words are those of a report
  }
}

// Before the probe's main begins, as a system is there before its programs.
[[maybe_unused]] const bool isMachineSet = [] {
  platform::SetMachine(ReadThisHost);
  return true;
}();

}  // namespace
