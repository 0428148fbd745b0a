// The threshold-exceeded condition as the standard defines it, for drives whose own answer
// does not come through.
#pragma once

#include <optional>

#include "platform/machine.h"

namespace machines {

// True: the normalized value of a pre-failure attribute is at or below its threshold. Each
// threshold is paired with the first attribute of its identifier that has a value, as in the
// report, so that the condition holds exactly where a pre-failure line warns. Nothing: the
// blocks have no such pair, so that nothing is known. A value of 0 is no value. The blocks are as
// the drive sends them: the probe's byte-order pass moves the bit that marks pre-failure.
std::optional<bool> ExceededCondition(const platform::Drive::Block& data,
                                      const platform::Drive::Block& thresholds);

}  // namespace machines
