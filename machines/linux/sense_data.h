// What the sense data of an ATA PASS-THROUGH tell: how the command ended, which registers
// the drive returned, and the answer to SMART RETURN STATUS in them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace machines {

enum class CommandEnd {
  kSucceeded,
  kRefused,  // the drive, or the layer before it, does not do this command
  kFailed,   // anything else: an error, a drive that is gone, an answer that makes no sense
};

struct ReturnedRegisters {
  std::uint8_t error = 0;
  std::uint8_t status = 0;
  std::uint8_t lbaMid = 0;
  std::uint8_t lbaHigh = 0;
};

struct CommandResult {
  CommandEnd end = CommandEnd::kFailed;
  std::optional<ReturnedRegisters> registers = std::nullopt;  // none: they did not come
};

// `sense` is in descriptor format, or in the fixed format that SAS adapters and some kernels
// send. What is cut short inside the registers, or is of an earlier command, has failed.
CommandResult ReadSense(std::span<const std::uint8_t> sense);

enum class StatusAnswer {
  kNone,    // the command failed, or the registers hold neither of the two answers
  kUnsaid,  // the command succeeded, but the firmware of an adapter kept the registers
  kNotExceeded,
  kExceeded,  // the drive exceeded a threshold
};

// `result` is that of SMART RETURN STATUS.
StatusAnswer ReadReturnStatus(const CommandResult& result);

}  // namespace machines
