#include "drives/statistics.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "drives/attribute_blocks.h"

namespace drives {
namespace {

using base::Block;
using Bytes = std::span<const std::uint8_t>;

constexpr std::string_view kSection = "statistics";
constexpr std::string_view kPowerOnHours = "power_on_hours";
constexpr std::string_view kSectorsWritten = "sectors_written";
constexpr std::string_view kSectorsRead = "sectors_read";
constexpr std::string_view kReallocatedSectors = "reallocated_sectors";
constexpr std::string_view kUncorrectable = "uncorrectable_errors";
constexpr std::string_view kCRCErrors = "crc_errors";
constexpr std::string_view kTemperature = "temperature_celsius";
constexpr std::string_view kMaximumTemperature = "maximum_temperature_celsius";
constexpr std::string_view kPercentageUsed = "percentage_used";

struct Row {
  std::uint8_t page;
  std::size_t offset, size;
  std::string_view key, name;
  Unit unit = Unit::kNone;
};

constexpr std::array kRows = {
    Row{1, 16, 4, kPowerOnHours, "Power-on time", Unit::kHours},
    Row{1, 24, 6, kSectorsWritten, "Sectors written", Unit::kDataUnits},
    Row{1, 40, 6, kSectorsRead, "Sectors read", Unit::kDataUnits},
    Row{3, 32, 4, kReallocatedSectors, "Reallocated sectors"},
    Row{4, 8, 4, kUncorrectable, "Reported uncorrectable errors"},
    Row{5, 8, 1, kTemperature, "Temperature", Unit::kCelsius},
    Row{5, 32, 1, "highest_temperature_celsius", "Highest temperature", Unit::kCelsius},
    Row{5, 88, 1, kMaximumTemperature, "Maximum operating temperature", Unit::kCelsius},
    Row{6, 24, 4, kCRCErrors, "Interface CRC errors"},
    Row{7, 8, 1, kPercentageUsed, "Percentage used", Unit::kPercent}};

// The value of the statistic, with the lowest byte first and flags in the last of 8.
std::optional<base::Count128> ValueOf(Bytes page, const Row& row) {
  constexpr std::size_t kFlags = 7;
  constexpr std::uint8_t kSupportedAndValid = 0xC0;
  constexpr std::uint8_t kNormalized = 0x20;
  const std::uint8_t flags = page[row.offset + kFlags];
  if ((flags & kSupportedAndValid) != kSupportedAndValid) return std::nullopt;
  // Then it is no count of sectors, but how much of the spare ones is used, in percent.
  if (row.key == kReallocatedSectors && (flags & kNormalized) != 0) return std::nullopt;
  if (row.unit == Unit::kCelsius) return base::Signed(static_cast<std::int8_t>(page[row.offset]));
  base::Count128 value;
  for (std::size_t i = row.size; i-- > 0;) value.low = value.low << 8 | page[row.offset + i];
  return value;
}

void AddFigures(RecordedFacts& facts, Bytes page, std::uint32_t sectorSize) {
  constexpr std::size_t kPageNumber = 2;
  for (const Row& row : kRows) {
    if (row.page != page[kPageNumber] || FindFigure(facts, row.key)) continue;
    const auto value = ValueOf(page, row);
    if (!value) continue;
    const std::uint32_t unitSize = row.unit == Unit::kDataUnits ? sectorSize : 0;
    facts.figures.push_back(
        {kSection, "", row.key, std::string(row.name), *value, row.unit, unitSize});
  }
}

std::optional<std::int64_t> ValueOf(const RecordedFacts& facts, std::string_view key) {
  const Figure* figure = FindFigure(facts, key);
  return figure ? std::optional(static_cast<std::int64_t>(figure->value.low)) : std::nullopt;
}

void UseCount(RecordedFacts& facts, const LossCount& counted) {
  const auto loss = std::ranges::find(facts.losses, counted.id, &LossCount::id);
  if (loss == facts.losses.end()) {
    facts.losses.insert(facts.losses.begin(), counted);
  } else {
    *loss = counted;
  }
}

void UseLosses(RecordedFacts& facts, std::uint32_t sectorSize) {
  const auto reallocated = ValueOf(facts, kReallocatedSectors);
  const bool isPlausible =
      reallocated && (!facts.capacity || *reallocated <= *facts.capacity / sectorSize);
  if (isPlausible) {
    UseCount(facts, {.id = kReallocatedId,
                     .name = drives::kReallocated,
                     .count = static_cast<std::uint64_t>(*reallocated),
                     .key = kReallocatedSectors});
  }
  if (const auto errors = ValueOf(facts, kUncorrectable)) {
    UseCount(facts, {.id = kUncorrectableId,
                     .name = "uncorrectable",
                     .ofSectors = false,
                     .count = static_cast<std::uint64_t>(*errors),
                     .key = kUncorrectable});
  }
}

void UseCRCErrors(RecordedFacts& facts) {
  const auto errors = ValueOf(facts, kCRCErrors);
  if (!errors) return;
  facts.crcErrors = LossCount{.id = kCRCId,
                              .name = "CRC",
                              .ofSectors = false,
                              .count = static_cast<std::uint64_t>(*errors),
                              .key = kCRCErrors};
}

void UseTemperature(RecordedFacts& facts) {
  constexpr int kColdest = -40;
  constexpr int kHottest = 125;
  const auto degrees = ValueOf(facts, kTemperature);
  if (degrees && *degrees >= kColdest && *degrees <= kHottest) {
    facts.temperature = static_cast<int>(*degrees);
    facts.temperatureId = 0;
    facts.temperatureKey = kTemperature;
  }
  const auto limit = ValueOf(facts, kMaximumTemperature);
  if (limit && *limit > 0) facts.temperatureLimit = static_cast<int>(*limit);
}

}  // namespace

std::vector<std::uint8_t> StatisticsPages(const Block& list) {
  constexpr std::size_t kCount = 8;
  const std::size_t count = std::min<std::size_t>(list[kCount], list.size() - kCount - 1);
  std::vector<std::uint8_t> pages;
  for (const std::uint8_t page : Bytes(list).subspan(kCount + 1, count)) {
    const bool isNew = std::ranges::find(pages, page) == pages.end();
    if (isNew && std::ranges::find(kRows, page, &Row::page) != kRows.end()) pages.push_back(page);
  }
  return pages;
}

void AddStatistics(Drive& drive, Bytes pages, std::uint32_t sectorSize) {
  RecordedFacts& facts = drive.recorded ? *drive.recorded : drive.recorded.emplace();
  for (; pages.size() >= base::kBlockSize; pages = pages.subspan(base::kBlockSize)) {
    AddFigures(facts, pages.first(base::kBlockSize), sectorSize);
  }
  const auto hours = ValueOf(facts, kPowerOnHours);
  if (hours && *hours <= kMaxPowerOnHours) facts.powerOnHours = static_cast<std::uint32_t>(*hours);
  facts.bytesRead = BytesOf(facts, kSectorsRead);
  facts.bytesWritten = BytesOf(facts, kSectorsWritten);
  UseLosses(facts, sectorSize);
  UseCRCErrors(facts);
  UseTemperature(facts);
  if (const auto used = ValueOf(facts, kPercentageUsed)) {
    facts.percentageUsed = static_cast<int>(*used);
    facts.percentageUsedKey = kPercentageUsed;
    facts.lifeLeft.clear();
  }
}

}  // namespace drives
