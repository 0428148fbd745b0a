// The sending of an ATA command, wrapped in SCSI's ATA PASS-THROUGH. The commands
// themselves are ata_drive.cpp's.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "platform/machine.h"

namespace machines {

// The registers that the commands in use need; all others are sent as 0.
struct AtaRegisters {
  std::uint8_t command = 0;
  std::uint8_t features = 0;
  std::uint8_t lbaMid = 0;
  std::uint8_t lbaHigh = 0;
};

// As the kernel hands it out; all zero where there is none.
using SenseData = std::array<std::uint8_t, 64>;

// Each sends one command to the open `node`, once, and waits for its end, at most 20
// seconds and what the kernel then needs to free the drive.

// A command without data. False: it failed.
bool SendCommand(int node, const AtaRegisters& registers);

// A command that reads one block. Nothing: it failed, or the block came short.
std::optional<platform::Drive::Block> ReadBlock(int node, const AtaRegisters& registers);

// A command without data whose answer is in the registers. They come in sense data,
// which is all zero if the command did not reach the drive.
SenseData SendForRegisters(int node, const AtaRegisters& registers);

}  // namespace machines
