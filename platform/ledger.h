// Counts the references that the layer has given to the probe and not got back, and ends a program
// that breaks the rules. The references themselves are kept in objects.cpp, registry.cpp,
// smart_user_client.cpp and toolbox.cpp.
#pragma once

#include <map>

namespace platform {

enum class ReferenceKind {
  kMatchingDictionary,
  kPropertyDictionary,
  kIterator,
  kService,
  kPlugIn,
  kSMARTInterface,
  kFoundValue,  // of a registry search
  kString,      // made of data, or looked up in a bundle
  kMemoryBlock
};

// How many references there are of each kind that has any. Each AddRef on a plug-in or an interface
// counts as one more, so it needs a Release of its own.
using Ledger = std::map<ReferenceKind, int>;

// The references that the probe has now.
Ledger OpenReferences();

// Takes back every reference that the probe has, as the platform does when a process ends. The
// ledger is then empty. A program that runs one pass after another calls this between them. The
// probe must not use what it still keeps from before, except constant strings, UUIDs and the main
// bundle.
void EndProcess();

// The parts of OpenReferences and EndProcess: each counts, or drops, the references that one source
// keeps.
void CountObjects(Ledger& ledger);
void CountRegistryHandles(Ledger& ledger);
void CountUserClients(Ledger& ledger);
void CountMemoryBlocks(Ledger& ledger);
void DropObjects();
void DropRegistryHandles();
void DropUserClients();
void DropMemoryBlocks();

// Drop what the layer has found out about the machine's texts and entries. EndProcess keeps that,
// and SetMachine drops it.
void DropTexts();
void DropTree();

// Prints "CALL: FAULT" on standard error and aborts. The platform would go on with damaged state.
[[noreturn]] void Misuse(const char* call, const char* fault);

}  // namespace platform
