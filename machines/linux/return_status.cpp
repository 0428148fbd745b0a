#include "machines/linux/return_status.h"

namespace machines {

StatusAnswer ReadReturnStatus(const CommandResult& result) {
  constexpr std::uint8_t kBusyFaultRequestError = 0x80 | 0x20 | 0x08 | 0x01;
  if (result.end != CommandEnd::kSucceeded) return StatusAnswer::kNone;
  if (!result.registers) return StatusAnswer::kUnsaid;
  // A failed command can leave in the registers what was sent in them, and what was sent
  // is what a healthy drive answers.
  const auto& [status, lbaMid, lbaHigh] = *result.registers;
  if ((status & kBusyFaultRequestError) != 0) return StatusAnswer::kNone;
  if (lbaMid == 0x4F && lbaHigh == 0xC2) return StatusAnswer::kNotExceeded;
  if (lbaMid == 0xF4 && lbaHigh == 0x2C) return StatusAnswer::kExceeded;
  return StatusAnswer::kNone;
}

}  // namespace machines
