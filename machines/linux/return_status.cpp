#include "machines/linux/return_status.h"

#include <scsi/sg_lib.h>

#include <algorithm>
#include <cstddef>

namespace machines {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kDescriptorSize = 14;

// Empty when there is no complete descriptor within the length that the header gives.
Bytes FindDescriptor(Bytes sense) {
  constexpr int kAtaStatusReturn = 0x09;
  if (sense.size() < kHeaderSize) return {};
  const Bytes used = sense.first(std::min(sense.size(), kHeaderSize + sense[7]));
  const std::uint8_t* found =
      sg_scsi_sense_desc_find(used.data(), static_cast<int>(used.size()), kAtaStatusReturn);
  if (found == nullptr) return {};
  const Bytes descriptor = used.subspan(static_cast<std::size_t>(found - used.data()));
  const bool isComplete =
      descriptor.size() >= kDescriptorSize && descriptor[1] == kDescriptorSize - 2;
  return isComplete ? descriptor : Bytes();
}

// A failed command can leave in the registers what was sent in them, and what was sent
// is what a healthy drive answers.
bool Succeeded(Bytes sense, Bytes descriptor) {
  constexpr std::uint8_t kRecoveredError = 0x01;  // how a success with registers is sent
  constexpr std::uint8_t kBusyFaultRequestError = 0x80 | 0x20 | 0x08 | 0x01;
  return (sense[1] & 0x0F) <= kRecoveredError && (descriptor[13] & kBusyFaultRequestError) == 0;
}

}  // namespace

std::optional<bool> ReadReturnStatus(Bytes sense) {
  const Bytes descriptor = FindDescriptor(sense);
  if (descriptor.empty() || !Succeeded(sense, descriptor)) return std::nullopt;
  const unsigned int lbaMid = descriptor[9];
  const unsigned int lbaHigh = descriptor[11];
  if (lbaMid == 0x4F && lbaHigh == 0xC2) return false;
  if (lbaMid == 0xF4 && lbaHigh == 0x2C) return true;
  return std::nullopt;
}

}  // namespace machines
