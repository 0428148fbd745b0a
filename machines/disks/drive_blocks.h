// What the blocks that a drive sends tell: its IDENTIFY DEVICE data, as they come or in the page
// in which the kernel keeps them, and the condition in its data and thresholds.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/machine.h"

namespace machines {

// The IDENTIFY DEVICE data in an ATA Information page (89h of the vital product data).
// `page` is whole, from its header on. nullopt if the page is too short or another, the data are
// zeros, or they are those of a packet device such as an optical drive.
std::optional<platform::Block> FindIdentifyData(std::string_view page);

// The model number, in reading order and printable: at most 40 characters of ASCII without the
// padding, or none.
std::string ModelNumber(const platform::Block& identify);

// The serial number, in the same way: at most 20 characters.
std::string SerialNumber(const platform::Block& identify);

// Whether the drive says that it has no S.M.A.R.T. False is no promise that it has: old drives do
// not say.
bool LacksSMART(const platform::Block& identify);

// Puts a question mark in the place of each byte of serial number and revision that is
// neither printable ASCII nor NUL: a line feed there would break a report. NULs stay, as the
// padding of some drives. All else of the block stays as well, so its checksum may be wrong now.
void MakePrintable(platform::Block& identify);

// Model and serial number as they stand in the data once they are printable, for comparison: a text
// of 60 bytes, or an empty one where the drive has no serial number, so that it may be any.
std::string Identity(platform::Block identify);

// What an attribute has besides what a report tells of it.
struct AttributeCounts {
  std::uint8_t worst = 0;  // the lowest normalized value so far
  std::uint64_t raw = 0;   // 48 bits, the maker's own: a count, or several, or none
};

// Of the attribute of the data that a report pairs with a threshold of that identifier, the first
// that has a normalized value; where none has one, of the first of that identifier. nullopt if the
// drive has none.
std::optional<AttributeCounts> FindCounts(const platform::Block& data, std::uint8_t identifier);

// The threshold-exceeded condition as the standard defines it, for drives whose own answer does
// not come through. True: the normalized value of a pre-failure attribute is at or below its
// threshold. Each threshold is paired with the first attribute of its identifier that has a value,
// as in the report, so that the condition holds exactly where a pre-failure line warns. nullopt if
// the blocks have no such pair, so that nothing is known. A value of 0 is no value. The blocks are
// as the drive sends them: the probe's byte-order pass moves the bit that marks pre-failure.
std::optional<bool> ExceededCondition(const platform::Block& data,
                                      const platform::Block& thresholds);

}  // namespace machines
