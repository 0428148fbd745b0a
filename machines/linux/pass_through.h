// The sending of an ATA command, wrapped in SCSI's ATA PASS-THROUGH. The commands
// themselves are ata_drive.cpp's.
#pragma once

#include <cstdint>
#include <optional>

#include "machines/linux/sense_data.h"
#include "platform/machine.h"

namespace machines {

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
