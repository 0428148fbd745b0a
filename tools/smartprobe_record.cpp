// smartprobe-record: this host as a recorded machine.
#include "tools/recorder.h"

int main(int argc, char** argv) {
  return tools::RunRecorder(argc, argv, {machines::kSysfs, machines::kDev});
}
