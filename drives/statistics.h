// The layout of an ATA drive's device statistics, which the standard defines, and what they take
// the place of.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/block.h"
#include "drives/facts.h"

namespace drives {

// The numbers of the pages that are looked at, as far as they are in the list of pages.
std::vector<std::uint8_t> StatisticsPages(const base::Block& list);

// Adds each statistic that the drive marks as supported and valid, of whole pages one after the
// other. `sectorSize` is in bytes. A plausible one takes the place of what attributes say of the
// same thing: power-on time, reallocated sectors, uncorrectable errors, temperature, wear.
void AddStatistics(Drive& drive, std::span<const std::uint8_t> pages, std::uint32_t sectorSize);

}  // namespace drives
