// The handles of registry objects that the probe holds: services and iterators.
#pragma once

#include <IOKit/IOKitLib.h>

#include <cstddef>
#include <vector>

#include "platform/machine.h"

namespace platform {

// An entry with its ancestors: the root first, the entry itself last.
// Never empty; the entries belong to the machine.
using EntryPath = std::vector<const Entry*>;

struct Iterator {
  std::vector<EntryPath> matches;  // as they were found when it was made
  std::size_t next = 0;            // the match to hand out next; matches.size() at the end
};

// Each gives the probe the only reference to a new handle, entered in the ledger.
// No handle is ever used again, so a stale one is never taken for another.
io_service_t NewService(EntryPath path);
io_iterator_t NewIterator(std::vector<EntryPath> matches);

// What a handle stands for; null, a dead one or one of the other kind is misuse of `call`.
// The result lives until the handle is released.
const EntryPath& ServicePath(io_service_t service, const char* call);
Iterator& IteratorState(io_iterator_t iterator, const char* call);

}  // namespace platform
