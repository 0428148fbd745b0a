#include "machines/linux/self_tester.h"

#include "machines/linux/self_testers.h"

namespace machines {

std::unique_ptr<SelfTester> MakeSelfTester(const Disk& disk, int node) {
  switch (disk.kind) {
    case DiskKind::kAHCI:
    case DiskKind::kATA:
      return MakeAtaSelfTester(node, HasLogs(disk));
    case DiskKind::kNVMe:
      return MakeNvmeSelfTester(node);
    case DiskKind::kSCSI:
      return MakeScsiSelfTester(node);
    case DiskKind::kOther:
      return nullptr;
  }
  return nullptr;
}

}  // namespace machines
