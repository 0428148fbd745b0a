// ATA commands on their way through SCSI's ATA PASS-THROUGH, and what their sense data tell:
// how a command ended, which registers the drive returned, and the answer to SMART RETURN
// STATUS in them. Which commands a drive is sent is ata_drive.cpp's.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/machine.h"

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

// The registers that the commands in use need; all others are sent as 0.
struct AtaRegisters {
  std::uint8_t command = 0;
  std::uint8_t features = 0;
  std::uint8_t lbaMid = 0;
  std::uint8_t lbaHigh = 0;
};

// Each sends one command to the open `node`, once, and waits for its end, at most 20
// seconds and what the kernel then needs to free the drive.

// A command without data. A layer that returns registers reports even a success as an
// error, so they are asked for only where they are wanted.
enum class Registers { kUnwanted, kWanted };
CommandResult SendCommand(int node, const AtaRegisters& registers,
                          Registers returned = Registers::kUnwanted);

struct BlockResult {
  CommandEnd end = CommandEnd::kFailed;
  std::optional<platform::Drive::Block> block = std::nullopt;  // of a success
};

// A command that reads one block. One that comes short has failed.
BlockResult ReadBlock(int node, const AtaRegisters& registers);

}  // namespace machines
