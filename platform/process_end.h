// The end of a process, as far as the probe's references are concerned.
#pragma once

namespace platform {

// Takes back every reference that is out, as the platform does when a process ends,
// and the ledger is empty. For programs that run one pass after another.
void EndProcess();

// The parts of EndProcess: each drops the references that its source keeps.
void DropObjects();
void DropRegistryHandles();
void DropUserClients();
void DropMemoryBlocks();

}  // namespace platform
