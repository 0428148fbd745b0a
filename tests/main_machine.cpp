// The machine behind the compiled entry point: one drive that cannot be opened.
#include "platform/machine.h"

platform::Machine& platform::ThisMachine() {
  static Machine machine{
      0x1068, {{"IOAHCIBlockStorageDevice", "IOAHCIBlockStorageDevice", {}, {}, nullptr}}, {}};
  return machine;
}
