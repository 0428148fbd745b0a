// The ledger counts the references that the layer has handed to the probe and has
// not been given back. What a reference refers to is kept elsewhere.
#pragma once

namespace platform {

struct Ledger {
  int matchingDictionaries = 0;
  int propertyDictionaries = 0;
  int iterators = 0;
  int services = 0;
  int plugIns = 0;
  int smartInterfaces = 0;
  int foundValues = 0;  // of a registry search
  int strings = 0;      // made of data, or looked up in a bundle
  int memoryBlocks = 0;

  bool operator==(const Ledger&) const = default;
};

// A kind of reference: the count that it is entered in.
using ReferenceKind = int Ledger::*;

// The references that are out now.
Ledger& OpenReferences();

// What `after` holds beyond `before`, kind by kind.
Ledger operator-(const Ledger& after, const Ledger& before);

}  // namespace platform
