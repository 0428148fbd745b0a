// The one file that sends commands through the SCSI library.
#include "machines/linux/pass_through.h"

#include <scsi/sg_cmds_extra.h>

#include <array>
#include <cstdlib>
#include <span>

namespace machines {
namespace {

using Block = platform::Drive::Block;
using Cdb = std::array<std::uint8_t, 16>;  // of ATA PASS-THROUGH(16)

constexpr std::uint8_t kNonData = 3 << 1;
constexpr std::uint8_t kPIODataIn = 4 << 1;

constexpr std::uint8_t kReturnRegisters = 0x20;
// From the device, in blocks, as many as the count says.
constexpr std::uint8_t kReadCountedBlocks = 0x08 | 0x04 | 0x02;

Cdb Wrap(const AtaRegisters& registers, std::uint8_t protocol, std::uint8_t flags) {
  Cdb cdb{};
  cdb[1] = protocol;
  cdb[2] = flags;
  cdb[4] = registers.features;
  cdb[10] = registers.lbaMid;
  cdb[12] = registers.lbaHigh;
  cdb[14] = registers.command;
  return cdb;
}

// The library takes settings from two variables; a run is to be the same everywhere.
// `missing` is how many bytes of the data did not come.
CommandResult Send(int node, const Cdb& cdb, std::span<std::uint8_t> data, int& missing) {
  constexpr int kTimeoutSeconds = 20;
  constexpr int kSilent = 0;
  constexpr int kGood = 0;
  constexpr int kCheckCondition = 2;
  unsetenv("SG3_UTILS_DSENSE");
  unsetenv("SG3_UTILS_LINUX_NANO");
  std::array<std::uint8_t, 64> sense{};
  const int status =
      sg_ll_ata_pt(node, cdb.data(), static_cast<int>(cdb.size()), kTimeoutSeconds,
                   data.empty() ? nullptr : data.data(), nullptr, static_cast<int>(data.size()),
                   sense.data(), static_cast<int>(sense.size()), nullptr, 0, &missing, kSilent);
  if (status == kGood && sense[0] == 0) return {CommandEnd::kSucceeded};
  if (status == kGood || status == kCheckCondition) return ReadSense(sense);
  return {};
}

}  // namespace

CommandResult SendCommand(int node, const AtaRegisters& registers, Registers returned) {
  const std::uint8_t flags = returned == Registers::kWanted ? kReturnRegisters : 0;
  int missing = 0;
  return Send(node, Wrap(registers, kNonData, flags), {}, missing);
}

BlockResult ReadBlock(int node, const AtaRegisters& registers) {
  Cdb cdb = Wrap(registers, kPIODataIn, kReadCountedBlocks);
  cdb[6] = 1;
  Block block{};
  int missing = 0;
  const CommandEnd end = Send(node, cdb, block, missing).end;
  if (end != CommandEnd::kSucceeded) return {end};
  if (missing != 0) return {};
  return {end, block};
}

}  // namespace machines
