// The answer to SMART RETURN STATUS, which stands in two registers of the drive.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace machines {

// `sense` is the sense data that came with the registers. True: the drive exceeded a
// threshold. Nothing: the command failed, or the registers are not there or hold
// neither of the two answers.
std::optional<bool> ReadReturnStatus(std::span<const std::uint8_t> sense);

}  // namespace machines
