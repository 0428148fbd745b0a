#include "drives/attribute_blocks.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "drives/self_tests.h"

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

// The attribute that a report has, or else the first of that identifier.
std::optional<Entry> FindAttribute(const Block& data, std::uint8_t id) {
  const auto attribute = FindAttribute(data, id, 1);
  return attribute ? attribute : FindAttribute(data, id, 0);
}

Counts CountsOf(const Entry& attribute) {
  Counts counts = {.worst = attribute[kWorst]};
  for (std::size_t i = kRawSize; i-- > 0;) counts.raw = counts.raw << 8 | attribute[kRaw + i];
  return counts;
}

// Every maker puts the temperature of now into the lowest byte; what is above it differs.
void AddTemperature(RecordedFacts& facts, const Block& data) {
  for (const std::uint8_t id : std::to_array<std::uint8_t>({194, 190})) {
    const auto counts = FindCounts(data, id);
    const int degrees = counts ? static_cast<int>(counts->raw & 0xFF) : 0;
    if (degrees < 1 || degrees > 100) continue;
    facts.temperature = degrees;
    facts.temperatureId = id;
    return;
  }
}

struct LossAttribute {
  std::uint8_t id;
  std::string_view name;
  bool ofSectors;
};
constexpr std::array kLossAttributes{LossAttribute{kReallocatedId, kReallocated, true},
                                     LossAttribute{197, "pending", true},
                                     LossAttribute{198, "uncorrectable", true},
                                     LossAttribute{kUncorrectableId, "uncorrectable", false},
                                     LossAttribute{184, "end-to-end", false}};

bool IsInitial(std::uint8_t value) { return value == 100 || value == 200 || value == 253; }

// Of several attributes of one identifier the one with the largest count.
std::optional<Entry> FindLargest(const Block& data, std::uint8_t id) {
  std::optional<Entry> largest;
  for (std::size_t i = 0; i < kEntries; i++) {
    const Entry entry = EntryOf(data, i);
    if (entry[kId] != id) continue;
    if (!largest || CountsOf(entry).raw > CountsOf(*largest).raw) largest = entry;
  }
  return largest;
}

std::vector<LossCount> Losses(const Block& data) {
  std::vector<LossCount> losses;
  for (const auto& [id, name, ofSectors] : kLossAttributes) {
    const auto attribute = FindLargest(data, id);
    if (!attribute) continue;
    const bool hasFallen = !IsInitial((*attribute)[kValue]) || !IsInitial((*attribute)[kWorst]);
    losses.push_back({id, name, ofSectors, ClearCount(CountsOf(*attribute).raw), hasFallen});
  }
  return losses;
}

// Makers have several attributes for it, whose normalized value begins at 100 and ends at 0.
std::vector<LifeLeft> LivesLeft(const Block& data) {
  std::vector<LifeLeft> lives;
  for (const std::uint8_t id : std::to_array<std::uint8_t>({177, 202, 231, 232, 233})) {
    const auto attribute = FindAttribute(data, id);
    if (attribute) lives.push_back({id, (*attribute)[kValue]});
  }
  std::ranges::stable_sort(lives, {}, &LifeLeft::percent);
  return lives;
}

std::optional<std::uint32_t> LowCount(const Block& data, std::uint8_t id) {
  const auto counts = FindCounts(data, id);
  return counts ? std::optional(static_cast<std::uint32_t>(counts->raw)) : std::nullopt;
}

// Maxtor's own drives count minutes, but not those that another maker made under its name, and most
// of Fujitsu's count seconds.
std::uint32_t UnitsAnHour(std::string_view product) {
  const bool isMaxtor = product.starts_with("Maxtor") || product.starts_with("MAXTOR");
  if (isMaxtor && product.find(" STM") == std::string_view::npos) return 60;
  return product.starts_with("FUJITSU") ? 3600 : 1;
}

// nullopt also for what is no time that a drive has been on: more than 30 years, or seconds that
// are less than a minute a power cycle, which a drive must count in another unit.
std::optional<std::uint32_t> PowerOnHours(const Block& data, std::string_view product) {
  const auto count = LowCount(data, 9);
  if (!count) return std::nullopt;
  const std::uint32_t unitsAnHour = UnitsAnHour(product);
  const std::uint64_t minutes = std::uint64_t{*count} * 60 / unitsAnHour;
  const bool isOtherUnit = unitsAnHour > 60 && minutes < LowCount(data, 12).value_or(0);
  if (isOtherUnit || minutes / 60 > kMaxPowerOnHours) return std::nullopt;
  return static_cast<std::uint32_t>(minutes / 60);
}

}  // namespace

std::optional<Counts> FindCounts(const Block& data, std::uint8_t id) {
  const auto attribute = FindAttribute(data, id);
  return attribute ? std::optional(CountsOf(*attribute)) : std::nullopt;
}

std::optional<std::uint32_t> ClearCount(std::uint64_t raw) {
  if (raw >> 32 == 0) return static_cast<std::uint32_t>(raw);
  if ((raw >> 16 & 0xFFFF) == 0) return static_cast<std::uint32_t>(raw & 0xFFFF);
  return std::nullopt;
}

void AddData(Drive& drive, const Block& data) {
  for (Attribute& attribute : drive.attributes) attribute.counts = FindCounts(data, attribute.id);
  RecordedFacts& facts = drive.recorded ? *drive.recorded : drive.recorded.emplace();
  AddTemperature(facts, data);
  facts.losses = Losses(data);
  if (const auto crc = FindLargest(data, kCRCId)) {
    facts.crcErrors = LossCount{
        .id = kCRCId, .name = "CRC", .ofSectors = false, .count = ClearCount(CountsOf(*crc).raw)};
  }
  facts.selfTest = SelfTestStatusOf(data).status;
  facts.powerOnHours = PowerOnHours(data, drive.product);
  facts.powerCycles = LowCount(data, 12);
  if (facts.rotationRate == 0) facts.lifeLeft = LivesLeft(data);
}

std::uint16_t StandardFlags(std::uint16_t flags) {
  return static_cast<std::uint16_t>(flags << 8 | flags >> 8);
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
