// Sends ATA commands through SCSI's ATA PASS-THROUGH and reads their sense data: how a command
// ended, which registers the drive returned, and what these answer to SMART RETURN STATUS and CHECK
// POWER MODE. ata_drive.cpp, ata_logs.cpp and ata_self_tester.cpp decide which commands a drive is
// sent.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/machine.h"

namespace machines {

enum class CommandEnd {
  kSucceeded,
  kRefused,  // the drive, or the layer before it, does not support this command
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
  // nullopt: none came. They may come with a failure too, but then say nothing about health.
  std::optional<ReturnedRegisters> registers = std::nullopt;
};

// Takes sense data of any length, in descriptor format or in the fixed format that SAS adapters and
// some kernels send. Bytes beyond the length in their header are not read. The command counts as
// failed if the data are cut short inside the registers or are from an earlier command.
CommandResult ParseSense(std::span<const std::uint8_t> sense);

enum class StatusAnswer {
  kNone,    // the command failed, or the registers hold neither of the two answers
  kUnsaid,  // the command succeeded, but the firmware of an adapter dropped the registers
  kNotExceeded,
  kExceeded,  // the drive exceeded a threshold
};

// `result` is that of SMART RETURN STATUS, sent with its registers wanted. ATA has two pairs of
// values as answers. Any other pair is no answer, so that it is not taken for a good one.
StatusAnswer ParseReturnStatus(const CommandResult& result);

// Whether the drive says that it is in standby, where its medium does not spin. `result` is that of
// CHECK POWER MODE, sent with its registers wanted. False if the drive does not answer. Registers
// that are all zeros are no answer: they come from a layer that did not ask the drive.
bool IsInStandby(const CommandResult& result);

// The registers that the commands in use need. All others are sent as 0, except the count of
// ReadBlock, which is 1.
struct AtaRegisters {
  std::uint8_t command = 0;
  std::uint8_t features = 0;
  std::uint8_t lbaLow = 0;
  std::uint8_t lbaMid = 0;
  std::uint8_t lbaHigh = 0;
  bool isExtended = false;  // a command of 48-bit addresses
};

// Every S.M.A.R.T. command carries the same signature.
constexpr AtaRegisters SMARTCommand(std::uint8_t operation, std::uint8_t lbaLow = 0) {
  return {
      .command = 0xB0, .features = operation, .lbaLow = lbaLow, .lbaMid = 0x4F, .lbaHigh = 0xC2};
}

inline constexpr AtaRegisters kIdentifyDevice = {.command = 0xEC};
inline constexpr AtaRegisters kReadData = SMARTCommand(0xD0);
inline constexpr AtaRegisters kEnableOperations = SMARTCommand(0xD8);

// SendCommand and ReadBlock send one command to the open `node`, once, and wait for its end: at
// most 20 seconds, and then as long as the kernel needs to free the drive. `node` stays open and
// the caller's. They remove two variables that change the SCSI library from the environment.

// Sends a command without data. A layer that returns registers reports even a success as an error,
// so the caller says whether it wants them.
enum class Registers { kUnwanted, kWanted };
CommandResult SendCommand(int node, const AtaRegisters& registers,
                          Registers returned = Registers::kUnwanted);

struct BlockResult {
  CommandEnd end = CommandEnd::kFailed;
  std::optional<base::Block> block = std::nullopt;  // after a success, and only then
};

// Sends a command that reads one block, whose bytes are `fill` where the layers before the drive
// send none. It has failed if the block is short. The bytes are not checked: zeros or a wrong
// checksum are not noticed here.
BlockResult ReadBlock(int node, const AtaRegisters& registers, const base::Block& fill = {});

// The block that the drive sends. nullopt also for a block of zeros, which an adapter gives that
// did not ask the drive.
std::optional<base::Block> ReadAnswer(int node, const AtaRegisters& registers);

}  // namespace machines
