// The one file that sends commands through the SCSI library.
#include "machines/linux/pass_through.h"

#include <scsi/sg_cmds_extra.h>

#include <cstddef>
#include <cstdlib>

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

struct Outcome {
  int status = -1;  // SCSI's; negative: the command did not get through
  int missing = 0;  // bytes of the data
  SenseData sense{};
};

// The library takes settings from two variables of the environment, which are cleared, so
// that a run is the same everywhere. A disk that has to spin up first needs ten seconds or
// so for its answer.
Outcome Send(int node, const Cdb& cdb, void* data = nullptr, std::size_t size = 0) {
  constexpr int kTimeoutSeconds = 20;
  constexpr int kSilent = 0;
  unsetenv("SG3_UTILS_DSENSE");
  unsetenv("SG3_UTILS_LINUX_NANO");
  Outcome outcome;
  outcome.status =
      sg_ll_ata_pt(node, cdb.data(), static_cast<int>(cdb.size()), kTimeoutSeconds, data, nullptr,
                   static_cast<int>(size), outcome.sense.data(),
                   static_cast<int>(outcome.sense.size()), nullptr, 0, &outcome.missing, kSilent);
  return outcome;
}

}  // namespace

bool SendCommand(int node, const AtaRegisters& registers) {
  return Send(node, Wrap(registers, kNonData, 0)).status == 0;
}

std::optional<Block> ReadBlock(int node, const AtaRegisters& registers) {
  Cdb cdb = Wrap(registers, kPIODataIn, kReadCountedBlocks);
  cdb[6] = 1;
  Block block{};
  const Outcome outcome = Send(node, cdb, block.data(), block.size());
  if (outcome.status != 0 || outcome.missing != 0) return std::nullopt;
  return block;
}

SenseData SendForRegisters(int node, const AtaRegisters& registers) {
  const Outcome outcome = Send(node, Wrap(registers, kNonData, kReturnRegisters));
  return outcome.status < 0 ? SenseData{} : outcome.sense;
}

}  // namespace machines
