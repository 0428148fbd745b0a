// The layout of the S.M.A.R.T. data and threshold blocks, and the rules for raw values.
#pragma once

#include <cstdint>
#include <optional>

#include "base/block.h"
#include "drives/facts.h"

namespace drives {

// Attributes that count what the standard's statistics count too.
inline constexpr std::uint8_t kReallocatedId = 5;
inline constexpr std::uint8_t kUncorrectableId = 187;
inline constexpr std::uint8_t kCRCId = 199;

inline constexpr std::uint32_t kMaxPowerOnHours = 30 * 365 * 24;  // more are none

// The worst and the raw value of an attribute: of the first one with that identifier that has a
// normalized value, which is the one in a report, or, where none has, of the first one. nullopt if
// the data hold none.
std::optional<Counts> FindCounts(const base::Block& data, std::uint8_t id);

// The number of events or sectors that a raw value counts. Makers that put other counts above it
// leave 16 bits of zeros between. nullopt where the raw value is no clear count.
std::optional<std::uint32_t> ClearCount(std::uint64_t raw);

// The flags of an attribute in a report, whose bytes are in the order that the drive sends them, as
// the standard numbers their bits.
std::uint16_t StandardFlags(std::uint16_t flags);

// Adds to each attribute of the drive its worst and raw value, and to the recorded facts what the
// data say: temperature, losses, self-test, power-on time and cycles, and the life left of a drive
// whose rotation rate is 0 by then.
void AddData(Drive& drive, const base::Block& data);

// The threshold-exceeded condition as the standard defines it, for drives whose own answer does
// not come through. True: the normalized value of a pre-failure attribute is at or below its
// threshold. Each threshold is paired with the first attribute of its identifier that has a value,
// as in the report, so that the condition holds exactly where a pre-failure line warns. nullopt if
// the blocks have no such pair, so that nothing is known. A value of 0 is no value. The blocks are
// as the drive sends them: the probe's byte-order pass moves the bit that marks pre-failure.
std::optional<bool> ExceededCondition(const base::Block& data, const base::Block& thresholds);

}  // namespace drives
