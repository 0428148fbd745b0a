// The layout of what a SCSI disk answers: log pages, sense data, and the header of its grown defect
// list.
#pragma once

#include <cstdint>
#include <span>

#include "drives/facts.h"

namespace drives {

// The codes of exceptions that foretell a failure, and of warnings. Of the warnings the first is
// that of a temperature.
inline constexpr std::uint8_t kFailurePrediction = 0x5D;
inline constexpr std::uint8_t kWarning = 0x0B;
inline constexpr std::uint8_t kTemperatureQualifier = 0x01;

// Adds what the log page says to the drive and its recorded facts: as many of its parameters as are
// whole, of the pages 02h, 03h, 05h, 0Dh, 0Eh, 11h, 15h and 2Fh. A value that stands for "not
// known" adds nothing.
void AddLogPage(Drive& drive, std::span<const std::uint8_t> page);

// Adds the exception that sense data report, or that there is none, which other codes mean. Adds
// nothing for what are no sense data, or where a page has told of exceptions.
void AddSense(Drive& drive, std::span<const std::uint8_t> sense);

// Whether sense data tell of such an exception.
bool TellsException(std::span<const std::uint8_t> sense);

// Adds how many defects the grown list has, by the header that READ DEFECT DATA(10) gives.
void AddDefectList(Drive& drive, std::span<const std::uint8_t> header);

}  // namespace drives
