// smartprobe-selftest: has this host's drives test themselves.
#include "tools/self_tests.h"

int main(int argc, char** argv) {
  return tools::RunSelfTests(argc, argv, {machines::kSysfs, machines::kDev});
}
