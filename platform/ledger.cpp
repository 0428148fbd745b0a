#include "platform/ledger.h"

#include <cstdio>
#include <cstdlib>

namespace platform {

Ledger OpenReferences() {
  Ledger ledger;
  CountUserClients(ledger);
  CountRegistryHandles(ledger);
  CountObjects(ledger);
  CountMemoryBlocks(ledger);
  return ledger;
}

void EndProcess() {
  DropUserClients();
  DropRegistryHandles();
  DropObjects();
  DropMemoryBlocks();
}

void Misuse(const char* call, const char* fault) {
  std::fprintf(stderr, "%s: %s\n", call, fault);
  std::abort();
}

}  // namespace platform
