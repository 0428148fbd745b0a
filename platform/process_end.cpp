#include "platform/process_end.h"

#include "platform/ledger.h"

namespace platform {

void EndProcess() {
  DropUserClients();
  DropRegistryHandles();
  DropObjects();
  DropMemoryBlocks();
  OpenReferences() = {};
}

}  // namespace platform
