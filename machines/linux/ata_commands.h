// ATA commands on their way through SCSI's ATA PASS-THROUGH, and what their sense data tell:
// how a command ended, which registers the drive returned, and the answers to SMART RETURN
// STATUS and CHECK POWER MODE in them. Which commands a drive is sent is ata_drive.cpp's.
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
  std::uint8_t count = 0;
  std::uint8_t lbaMid = 0;
  std::uint8_t lbaHigh = 0;
};

struct CommandResult {
  CommandEnd end = CommandEnd::kFailed;
  // None: they did not come. They may come with a failure too, and tell nothing of health then.
  std::optional<ReturnedRegisters> registers = std::nullopt;
};

// `sense` is in descriptor format, or in the fixed format that SAS adapters and some kernels
// send, of any length; what its header does not count is not read. What is cut short inside the
// registers, or is of an earlier command, has failed.
CommandResult ParseSense(std::span<const std::uint8_t> sense);

enum class StatusAnswer {
  kNone,    // the command failed, or the registers hold neither of the two answers
  kUnsaid,  // the command succeeded, but the firmware of an adapter kept the registers
  kNotExceeded,
  kExceeded,  // the drive exceeded a threshold
};

// `result` is that of SMART RETURN STATUS, sent with its registers wanted. Only the two pairs of
// values that the standard names are answers: another pair is not taken for a good one.
StatusAnswer ParseReturnStatus(const CommandResult& result);

// Whether the drive says that it is in standby, where its medium does not spin. `result` is that of
// CHECK POWER MODE, sent with its registers wanted. False where it says nothing; registers that are
// all zeros are those of a layer that has not asked the drive.
bool IsInStandby(const CommandResult& result);

// The registers that the commands in use need; all others are sent as 0.
struct AtaRegisters {
  std::uint8_t command = 0;
  std::uint8_t features = 0;
  std::uint8_t lbaMid = 0;
  std::uint8_t lbaHigh = 0;
};

// Each sends one command to the open `node`, once, and waits for its end, at most 20
// seconds and what the kernel then needs to free the drive. `node` stays the caller's, and open.
// Two variables by which the SCSI library can be changed are removed from the environment.

// A command without data. A layer that returns registers reports even a success as an
// error, so they are asked for only where they are wanted.
enum class Registers { kUnwanted, kWanted };
CommandResult SendCommand(int node, const AtaRegisters& registers,
                          Registers returned = Registers::kUnwanted);

struct BlockResult {
  CommandEnd end = CommandEnd::kFailed;
  std::optional<base::Block> block = std::nullopt;  // of a success, and only of one
};

// A command that reads one block. One that comes short has failed. The bytes are the drive's own:
// zeros or a wrong checksum are not noticed here.
BlockResult ReadBlock(int node, const AtaRegisters& registers);

}  // namespace machines
