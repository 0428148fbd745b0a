#include "machines/linux/sense_data.h"

#include <scsi/sg_lib.h>

#include <algorithm>
#include <cstddef>

namespace machines {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kHeaderSize = 8;  // of both formats; its last byte counts what follows

// The most of `sense` that its header says is there.
Bytes Used(Bytes sense) { return sense.first(std::min(sense.size(), kHeaderSize + sense[7])); }

CommandEnd EndOf(std::uint8_t senseKey) {
  constexpr std::uint8_t kNoSense = 0x00;
  constexpr std::uint8_t kRecoveredError = 0x01;  // a success with registers
  constexpr std::uint8_t kIllegalRequest = 0x05;
  constexpr std::uint8_t kAbortedCommand = 0x0B;
  switch (senseKey & 0x0F) {
    case kNoSense:
    case kRecoveredError:
      return CommandEnd::kSucceeded;
    case kIllegalRequest:
    case kAbortedCommand:
      return CommandEnd::kRefused;
    default:
      return CommandEnd::kFailed;
  }
}

CommandResult ReadDescriptors(Bytes sense) {
  constexpr int kAtaStatusReturn = 0x09;
  constexpr std::size_t kSize = 14;
  const CommandEnd end = EndOf(sense[1]);
  if (end != CommandEnd::kSucceeded) return {end};
  const std::uint8_t* found =
      sg_scsi_sense_desc_find(sense.data(), static_cast<int>(sense.size()), kAtaStatusReturn);
  if (found == nullptr) return {end};
  const Bytes descriptor = sense.subspan(static_cast<std::size_t>(found - sense.data()));
  if (descriptor.size() < kSize || descriptor[1] != kSize - 2) return {};
  return {end, ReturnedRegisters{descriptor[13], descriptor[9], descriptor[11]}};
}

// The registers stand in the fields for information, if the additional code says so.
CommandResult ReadFixed(Bytes sense) {
  constexpr std::size_t kSizeWithCode = 14;
  constexpr std::uint8_t kInformationAvailable = 0x1D;  // qualifies the code 00h
  const CommandEnd end = EndOf(sense[2]);
  if (end != CommandEnd::kSucceeded) return {end};
  if (sense.size() < kSizeWithCode) return {};
  if (sense[12] != 0 || sense[13] != kInformationAvailable) return {end};
  return {end, ReturnedRegisters{sense[4], sense[10], sense[11]}};
}

}  // namespace

CommandResult ReadSense(Bytes sense) {
  constexpr std::uint8_t kFixed = 0x70;
  constexpr std::uint8_t kDescriptors = 0x72;
  if (sense.size() < kHeaderSize) return {};
  switch (sense[0] & 0x7F) {
    case kDescriptors:
      return ReadDescriptors(Used(sense));
    case kFixed:
      return ReadFixed(Used(sense));
    default:
      return {};
  }
}

}  // namespace machines
