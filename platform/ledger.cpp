#include "platform/ledger.h"

#include <cstdio>
#include <cstdlib>

namespace platform {

Ledger& OpenReferences() {
  static Ledger ledger;
  return ledger;
}

void EndProcess() {
  DropUserClients();
  DropRegistryHandles();
  DropObjects();
  DropMemoryBlocks();
  OpenReferences() = {};
}

void Misuse(const char* call, const char* fault) {
  std::fprintf(stderr, "%s: %s\n", call, fault);
  std::abort();
}

}  // namespace platform
