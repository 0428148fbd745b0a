#include "drives/attribute_blocks.h"

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace drives {
namespace {

using base::Block;

constexpr std::size_t kEntries = 30;
constexpr std::size_t kFirstEntry = 2;
using Entry = std::span<const std::uint8_t, 12>;

// Offsets in an entry of either block, and in one of the data.
constexpr std::size_t kId = 0;
constexpr std::size_t kThreshold = 1;
constexpr std::size_t kFlags = 1;
constexpr std::size_t kValue = 3;
constexpr std::size_t kWorst = 4;
constexpr std::size_t kRaw = 5;
constexpr std::size_t kRawSize = 6;

Entry EntryOf(const Block& block, std::size_t index) {
  return Entry(block.data() + kFirstEntry + index * Entry::extent, Entry::extent);
}

// The first attribute of that identifier whose normalized value is at least `least`.
std::optional<Entry> FindAttribute(const Block& data, std::uint8_t id, int least) {
  for (std::size_t i = 0; i < kEntries; i++) {
    const Entry attribute = EntryOf(data, i);
    if (attribute[kId] == id && attribute[kValue] >= least) return attribute;
  }
  return std::nullopt;
}

// Every maker puts the temperature of now into the lowest byte; what is above it differs.
std::optional<int> Temperature(const Block& data) {
  for (const std::uint8_t id : std::to_array<std::uint8_t>({194, 190})) {
    const auto counts = FindCounts(data, id);
    if (!counts) continue;
    const int degrees = static_cast<int>(counts->raw & 0xFF);
    if (degrees >= 1 && degrees <= 100) return degrees;
  }
  return std::nullopt;
}

struct SectorAttribute {
  std::uint8_t id;
  std::string_view state;
};
constexpr std::array kSectorAttributes{SectorAttribute{5, "reallocated"},
                                       SectorAttribute{197, "pending"},
                                       SectorAttribute{198, "uncorrectable"}};

std::vector<SectorCount> LostSectors(const Block& data) {
  std::vector<SectorCount> sectors;
  for (const auto& [id, state] : kSectorAttributes) {
    if (const auto counts = FindCounts(data, id))
      sectors.push_back({state, ClearCount(counts->raw)});
  }
  return sectors;
}

}  // namespace

std::optional<Counts> FindCounts(const Block& data, std::uint8_t id) {
  std::optional<Entry> attribute = FindAttribute(data, id, 1);
  if (!attribute) attribute = FindAttribute(data, id, 0);
  if (!attribute) return std::nullopt;
  Counts counts = {.worst = (*attribute)[kWorst]};
  for (std::size_t i = kRawSize; i-- > 0;) counts.raw = counts.raw << 8 | (*attribute)[kRaw + i];
  return counts;
}

std::optional<std::uint32_t> ClearCount(std::uint64_t raw) {
  if (raw >> 32 == 0) return static_cast<std::uint32_t>(raw);
  if ((raw >> 16 & 0xFFFF) == 0) return static_cast<std::uint32_t>(raw & 0xFFFF);
  return std::nullopt;
}

void AddData(Drive& drive, const Block& data) {
  for (Attribute& attribute : drive.attributes) attribute.counts = FindCounts(data, attribute.id);
  if (!drive.recorded) drive.recorded.emplace();
  drive.recorded->temperature = Temperature(data);
  drive.recorded->sectors = LostSectors(data);
}

std::optional<bool> ExceededCondition(const Block& data, const Block& thresholds) {
  constexpr std::uint8_t kPreFailure = 0x01;
  std::optional<bool> exceeded;
  for (std::size_t i = 0; i < kEntries; i++) {
    const Entry threshold = EntryOf(thresholds, i);
    if (threshold[kId] == 0) continue;
    const std::optional<Entry> attribute = FindAttribute(data, threshold[kId], 1);
    if (!attribute) continue;
    const bool isReached = (*attribute)[kValue] <= threshold[kThreshold];
    exceeded = exceeded.value_or(false) || (isReached && ((*attribute)[kFlags] & kPreFailure) != 0);
  }
  return exceeded;
}

}  // namespace drives
