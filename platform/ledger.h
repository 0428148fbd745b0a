// The account of the references that the layer has handed to the probe and has not been given
// back, and the end of a program that breaks the rules. The references themselves are kept by
// their sources: objects.cpp, registry.cpp, smart_user_client.cpp, toolbox.cpp.
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

// How many references of each kind, where there are any. An AddRef on a plug-in or an interface
// counts as one more, so a Release has to answer each of them.
using Ledger = std::map<ReferenceKind, int>;

// The references that are out now.
Ledger OpenReferences();

// Takes back every reference that is out, as the platform does when a process ends,
// and the ledger is empty. For programs that run one pass after another. Whatever the probe still
// keeps from before is dangling then; constant strings, UUIDs and the main bundle alone stay.
void EndProcess();

// The parts of the two: each counts, or drops, the references that its source keeps.
void CountObjects(Ledger& ledger);
void CountRegistryHandles(Ledger& ledger);
void CountUserClients(Ledger& ledger);
void CountMemoryBlocks(Ledger& ledger);
void DropObjects();
void DropRegistryHandles();
void DropUserClients();
void DropMemoryBlocks();

// Drop what was found out about the machine's texts and entries, which outlives a process.
void DropTexts();
void DropTree();

// Where the platform would go on with damaged state, this layer stops: prints "CALL: FAULT"
// on standard error and aborts.
[[noreturn]] void Misuse(const char* call, const char* fault);

}  // namespace platform
