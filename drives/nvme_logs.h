// The layout of what an NVMe drive answers: the SMART / Health Information log page, and the
// Identify Controller data.
#pragma once

#include <cstdint>
#include <span>

#include "base/block.h"
#include "drives/facts.h"

namespace drives {

// The bit of the critical warning that says that the drive is too hot, or too cold. Every other one
// says that it is failing.
inline constexpr std::uint8_t kTemperatureWarning = 0x02;

// Adds what the log says to the drive and its recorded facts. Returns false, and adds nothing, if
// the log is not whole.
bool AddHealthLog(Drive& drive, std::span<const std::uint8_t> log);

// Adds the temperature limits in the first bytes of Identify Controller data, as far as these go
// and have any.
void AddController(Drive& drive, std::span<const std::uint8_t> controller);

// Whether the Identify Controller data say that the drive has self-tests.
bool HasNVMeSelfTests(std::span<const std::uint8_t> controller);

// Puts an X in the place of each character of the serial number, and zeros in that of the FRU
// identifier, which is another name of the one drive.
void MaskController(base::Block& controller);

}  // namespace drives
