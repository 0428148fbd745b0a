#include "machines/linux/identify_data.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/printable_text.h"

namespace machines {
namespace {

using Block = platform::Drive::Block;

std::uint16_t Word(const Block& identify, std::size_t index) {
  return static_cast<std::uint16_t>(identify[2 * index] | identify[2 * index + 1] << 8);
}

}  // namespace

std::optional<Block> FindIdentifyData(std::string_view page) {
  constexpr char kIdentifyPacketDevice = '\xA1';
  constexpr std::size_t kCommandOffset = 56;  // the command that the data answer
  constexpr std::size_t kDataOffset = 60;
  Block identify;
  if (page.size() < kDataOffset + identify.size()) return std::nullopt;
  if (page[kCommandOffset] == kIdentifyPacketDevice) return std::nullopt;
  std::ranges::copy(page.substr(kDataOffset, identify.size()), identify.begin());
  return identify;
}

// Of the two characters in a word the first is the high byte.
std::string ModelNumber(const Block& identify) {
  std::string model;
  for (std::size_t index = 27; index <= 46; index++) {
    const std::uint16_t word = Word(identify, index);
    model += static_cast<char>(word >> 8);
    model += static_cast<char>(word & 0xFF);
  }
  return base::PrintableASCII(model);
}

bool SupportsSMART(const Block& identify) { return (Word(identify, 82) & 0x0001) != 0; }

// A parallel drive has zeros or all ones where a serial one has its capabilities.
bool IsSerialATA(const Block& identify) {
  const std::uint16_t capabilities = Word(identify, 76);
  return capabilities != 0x0000 && capabilities != 0xFFFF;
}

}  // namespace machines
