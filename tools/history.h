// What the drives of a host answered before, from the recording that a new one replaces.
#pragma once

#include <chrono>

#include "platform/machine.h"

namespace tools {

struct HistoryRules {
  std::chrono::sys_seconds now;
  std::chrono::days kept{};       // how old earlier answers may become
  bool areSerialsMasked = false;  // in the recording that is made
};

// Adds to each drive of `machine` its earlier answers from the recording `before`: one for each of
// the last 31 days, the last of the day, and before that one a week. Adds an entry for each drive
// that is no longer there, for 31 days, at the end of the first root's children. A drive is known
// by its product and serial number; one that has none, or shares them, has no history. One that
// does not tell them is the one that was at its place. A drive that answered before and now has
// no answers was not read. Nothing is kept of a recording with masked serial
// numbers, unless the new one has them masked too.
void AddHistory(platform::Machine& machine, const platform::Machine& before,
                const HistoryRules& rules);

}  // namespace tools
