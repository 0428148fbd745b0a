// What the sense data of an ATA PASS-THROUGH tell: how the command ended, and which
// registers the drive returned. What the registers mean is return_status.h's.
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
  std::uint8_t status = 0;
  std::uint8_t lbaMid = 0;
  std::uint8_t lbaHigh = 0;
};

struct CommandResult {
  CommandEnd end = CommandEnd::kFailed;
  std::optional<ReturnedRegisters> registers = std::nullopt;
};

// `sense` is in descriptor format, or in the fixed format that SAS adapters and some kernels
// send. Registers are given of a success only. What is cut short inside the registers, or is
// of an earlier command, has failed.
CommandResult ReadSense(std::span<const std::uint8_t> sense);

}  // namespace machines
