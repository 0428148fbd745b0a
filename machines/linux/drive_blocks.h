// What the blocks that a drive sends tell: its IDENTIFY DEVICE data, as they come or in the page
// in which the kernel keeps them, and the condition in its data and thresholds.
#pragma once

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

// The threshold-exceeded condition as the standard defines it, for drives whose own answer does
// not come through. True: the normalized value of a pre-failure attribute is at or below its
// threshold. Each threshold is paired with the first attribute of its identifier that has a value,
// as in the report, so that the condition holds exactly where a pre-failure line warns. nullopt if
// the blocks have no such pair, so that nothing is known. A value of 0 is no value. The blocks are
// as the drive sends them: the probe's byte-order pass moves the bit that marks pre-failure.
std::optional<bool> ExceededCondition(const platform::Block& data,
                                      const platform::Block& thresholds);

}  // namespace machines
