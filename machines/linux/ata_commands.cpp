// The one file that sends ATA commands through the SCSI library.
#include "machines/linux/ata_commands.h"

#include <scsi/sg_cmds_extra.h>
#include <scsi/sg_lib.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "machines/linux/scsi_commands.h"

namespace machines {
namespace {

using Bytes = std::span<const std::uint8_t>;

// Bits of the status and error registers.
constexpr std::uint8_t kBusy = 0x80;
constexpr std::uint8_t kDeviceFault = 0x20;
constexpr std::uint8_t kDataRequest = 0x08;
constexpr std::uint8_t kError = 0x01;
constexpr std::uint8_t kAborted = 0x04;

struct Sense {
  std::uint8_t key = 0;
  std::uint8_t code = 0;
  std::uint8_t qualifier = 0;
  std::optional<ReturnedRegisters> registers = std::nullopt;
};

// Stores the registers in `parsed` if the sense data have them. Returns false if they are cut
// short.
//
// Fixed data have the registers in their information fields. After a success the additional code
// says so. After an error the code is the error's own, so the error bit of the status has to say
// that registers are there.
bool FindRegisters(Bytes sense, bool isFixed, Sense& parsed) {
  constexpr int kAtaStatusReturn = 0x09;
  constexpr std::uint8_t kInformationAvailable = 0x1D;  // qualifies the code 00h
  constexpr std::size_t kSize = 14;  // of the descriptor; fixed data need as many bytes
  if (isFixed) {
    if (sense.size() < kSize) return false;
    const bool isAnnounced = parsed.code == 0 && parsed.qualifier == kInformationAvailable;
    const bool isOfError = parsed.key > 1 && (sense[4] & kError) != 0;
    if (isAnnounced || isOfError)
      parsed.registers = {sense[3], sense[4], sense[6], sense[10], sense[11]};
    return true;
  }
  const std::uint8_t* found =
      sg_scsi_sense_desc_find(sense.data(), static_cast<int>(sense.size()), kAtaStatusReturn);
  if (found == nullptr) return true;
  const Bytes descriptor = sense.subspan(static_cast<std::size_t>(found - sense.data()));
  if (descriptor.size() < kSize || descriptor[1] != kSize - 2) return false;
  parsed.registers = {descriptor[3], descriptor[13], descriptor[5], descriptor[9], descriptor[11]};
  return true;
}

// False if `sense` is no sense data, is from an earlier command, or is cut short.
bool Parse(Bytes sense, Sense& parsed) {
  constexpr std::size_t kHeaderSize = 8;  // its last byte counts what follows
  constexpr std::uint8_t kFixed = 0x70;
  constexpr std::uint8_t kDescriptors = 0x72;
  if (sense.size() < kHeaderSize) return false;
  sense = sense.first(std::min(sense.size(), kHeaderSize + sense[7]));
  sg_scsi_sense_hdr header{};
  sg_scsi_normalize_sense(sense.data(), static_cast<int>(sense.size()), &header);
  const bool isFixed = header.response_code == kFixed;
  if (!isFixed && header.response_code != kDescriptors) return false;
  parsed = {header.sense_key, header.asc, header.ascq, std::nullopt};
  return FindRegisters(sense, isFixed, parsed);
}

// A drive that aborts a command says so in its registers. Some layers drop the registers. Without
// them only a code of 0 means that: other errors, of a cable or a drive that is gone, have a code.
bool IsAbort(const Sense& sense) {
  constexpr std::uint8_t kAbortedCommand = 0x0B;
  if (sense.key != kAbortedCommand) return false;
  if (!sense.registers) return sense.code == 0 && sense.qualifier == 0;
  const auto& [error, status, count, lbaMid, lbaHigh] = *sense.registers;
  return (status & (kBusy | kDeviceFault | kError)) == kError && (error & kAborted) != 0;
}

// Whether a layer before the drive does not know the command, or not in this form.
bool IsUnknownCommand(const Sense& sense) {
  constexpr std::uint8_t kIllegalRequest = 0x05;
  constexpr std::uint8_t kInvalidOperation = 0x20;
  constexpr std::uint8_t kInvalidField = 0x24;
  return sense.key == kIllegalRequest && sense.qualifier == 0 &&
         (sense.code == kInvalidOperation || sense.code == kInvalidField);
}

CommandEnd EndOf(const Sense& sense) {
  constexpr std::uint8_t kRecoveredError = 0x01;  // how a success with registers is sent
  if (IsAbort(sense) || IsUnknownCommand(sense)) return CommandEnd::kRefused;
  if (sense.key > kRecoveredError) return CommandEnd::kFailed;
  constexpr std::uint8_t kNotDone = kBusy | kDeviceFault | kDataRequest | kError;
  const bool isDone = !sense.registers || (sense.registers->status & kNotDone) == 0;
  return isDone ? CommandEnd::kSucceeded : CommandEnd::kFailed;
}

}  // namespace

CommandResult ParseSense(Bytes sense) {
  Sense parsed;
  if (!Parse(sense, parsed)) return {};
  return {EndOf(parsed), parsed.registers};
}

StatusAnswer ParseReturnStatus(const CommandResult& result) {
  if (result.end != CommandEnd::kSucceeded) return StatusAnswer::kNone;
  if (!result.registers) return StatusAnswer::kUnsaid;
  const auto& [error, status, count, lbaMid, lbaHigh] = *result.registers;
  if (lbaMid == 0x4F && lbaHigh == 0xC2) return StatusAnswer::kNotExceeded;
  if (lbaMid == 0xF4 && lbaHigh == 0x2C) return StatusAnswer::kExceeded;
  return StatusAnswer::kNone;
}

bool IsInStandby(const CommandResult& result) {
  constexpr std::uint8_t kReady = 0x40;
  constexpr std::uint8_t kLastStandby = 0x01;  // 00h and 01h
  return result.end == CommandEnd::kSucceeded && result.registers &&
         (result.registers->status & kReady) != 0 && result.registers->count <= kLastStandby;
}

namespace {

using base::Block;
using Cdb = std::array<std::uint8_t, 16>;  // of ATA PASS-THROUGH(16)

constexpr std::uint8_t kNonData = 3 << 1;
constexpr std::uint8_t kPIODataIn = 4 << 1;

constexpr std::uint8_t kReturnRegisters = 0x20;
// Transfers from the device, in blocks, as many as the count register says.
constexpr std::uint8_t kReadCountedBlocks = 0x08 | 0x04 | 0x02;

Cdb Wrap(const AtaRegisters& registers, std::uint8_t protocol, std::uint8_t flags) {
  Cdb cdb{};
  constexpr std::uint8_t kExtend = 1;
  cdb[1] = registers.isExtended ? protocol | kExtend : protocol;
  cdb[2] = flags;
  cdb[4] = registers.features;
  cdb[8] = registers.lbaLow;
  cdb[10] = registers.lbaMid;
  cdb[12] = registers.lbaHigh;
  cdb[14] = registers.command;
  return cdb;
}

// Stores in `missing` how many bytes of the data did not come.
CommandResult Send(int node, const Cdb& cdb, std::span<std::uint8_t> data, int& missing) {
  constexpr int kTimeoutSeconds = 20;
  constexpr int kSilent = 0;
  constexpr int kGood = 0;
  constexpr int kCheckCondition = 2;
  ClearLibraryEnvironment();
  std::array<std::uint8_t, 64> sense{};
  const int status =
      sg_ll_ata_pt(node, cdb.data(), static_cast<int>(cdb.size()), kTimeoutSeconds,
                   data.empty() ? nullptr : data.data(), nullptr, static_cast<int>(data.size()),
                   sense.data(), static_cast<int>(sense.size()), nullptr, 0, &missing, kSilent);
  if (status == kGood && sense[0] == 0) return {CommandEnd::kSucceeded};
  if (status == kGood || status == kCheckCondition) return ParseSense(sense);
  return {};
}

}  // namespace

CommandResult SendCommand(int node, const AtaRegisters& registers, Registers returned) {
  const std::uint8_t flags = returned == Registers::kWanted ? kReturnRegisters : 0;
  int missing = 0;
  return Send(node, Wrap(registers, kNonData, flags), {}, missing);
}

BlockResult ReadBlock(int node, const AtaRegisters& registers, const Block& fill) {
  Cdb cdb = Wrap(registers, kPIODataIn, kReadCountedBlocks);
  cdb[6] = 1;
  Block block = fill;
  int missing = 0;
  const CommandEnd end = Send(node, cdb, block, missing).end;
  if (end != CommandEnd::kSucceeded) return {end};
  if (missing != 0) return {};
  return {end, block};
}

std::optional<Block> ReadAnswer(int node, const AtaRegisters& registers) {
  const std::optional<Block> block = ReadBlock(node, registers).block;
  return block == Block{} ? std::nullopt : block;
}

}  // namespace machines
