#include "machines/linux/exceeded_condition.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace machines {
namespace {

using Block = platform::Drive::Block;
using Entry = std::span<const std::uint8_t, 12>;

constexpr std::size_t kEntries = 30;
constexpr std::size_t kFirstEntry = 2;

Entry EntryOf(const Block& block, std::size_t index) {
  return Entry(block.data() + kFirstEntry + index * Entry::extent, Entry::extent);
}

// An entry of the data: identifier, two bytes of flags, normalized value.
std::optional<Entry> FindWithValue(const Block& data, std::uint8_t identifier) {
  for (std::size_t i = 0; i < kEntries; i++) {
    const Entry attribute = EntryOf(data, i);
    if (attribute[0] == identifier && attribute[3] != 0) return attribute;
  }
  return std::nullopt;
}

}  // namespace

std::optional<bool> ExceededCondition(const Block& data, const Block& thresholds) {
  constexpr std::uint8_t kPreFailure = 0x01;
  std::optional<bool> exceeded;
  for (std::size_t i = 0; i < kEntries; i++) {
    const Entry threshold = EntryOf(thresholds, i);
    if (threshold[0] == 0) continue;
    const std::optional<Entry> attribute = FindWithValue(data, threshold[0]);
    if (!attribute) continue;
    const bool isReached = (*attribute)[3] <= threshold[1];
    exceeded = exceeded.value_or(false) || (isReached && ((*attribute)[1] & kPreFailure) != 0);
  }
  return exceeded;
}

}  // namespace machines
