// The ledger.
#include "platform/ledger.h"

#include <initializer_list>

namespace platform {

Ledger& OpenReferences() {
  static Ledger ledger;
  return ledger;
}

Ledger operator-(const Ledger& after, const Ledger& before) {
  Ledger difference = after;
  for (ReferenceKind kind :
       {&Ledger::matchingDictionaries, &Ledger::propertyDictionaries, &Ledger::iterators,
        &Ledger::services, &Ledger::plugIns, &Ledger::smartInterfaces, &Ledger::foundValues,
        &Ledger::strings, &Ledger::memoryBlocks}) {
    difference.*kind -= before.*kind;
  }
  return difference;
}

}  // namespace platform
