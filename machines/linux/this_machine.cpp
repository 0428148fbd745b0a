// The machine of the program smartprobe: the one that it runs on.
#include "base/standard_streams.h"
#include "machines/linux/sysfs_machine.h"
#include "platform/machine.h"

namespace {

// The probe's first question is the system's version. Nothing is opened or printed before.
platform::Machine StartMachine() {
  base::PrepareStandardStreams();
  return machines::ReadLinuxMachine();
}

}  // namespace

// Never destroyed: what the probe does not release may still refer to it.
platform::Machine& platform::ThisMachine() {
  static auto& machine = *new Machine(StartMachine());
  return machine;
}
