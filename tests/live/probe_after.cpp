// probe_after COMMAND: the probe on this host, with a shell command run between the
// building of the machine and the pass, so that the host changes under the probe.
#include <cstdlib>

#include "machines/linux/sysfs_machine.h"
#include "platform/machine.h"
#include "probe/start_up.h"

platform::Machine& platform::ThisMachine() {
  static Machine machine = machines::ReadLinuxMachine();
  return machine;
}

int main(int argc, char** argv) {
  platform::ThisMachine();
  if (argc != 2 || std::system(argv[1]) != 0) return 2;
  RunProbe();
  return 0;
}
