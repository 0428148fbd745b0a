// The layout of IDENTIFY DEVICE data: a drive's names, whether it has S.M.A.R.T., how it is built,
// and what tells it from all others of its model.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/block.h"
#include "drives/facts.h"

namespace drives {

// The IDENTIFY DEVICE data in an ATA Information page (89h of the vital product data).
// `page` is whole, from its header on. nullopt if the page is too short or another, the data are
// zeros, or they are those of a packet device such as an optical drive.
std::optional<base::Block> FindIdentifyData(std::string_view page);

// The model number, in reading order and printable: at most 40 characters of ASCII without the
// padding, or none.
std::string ModelNumber(const base::Block& identify);

// The serial number, in the same way: at most 20 characters.
std::string SerialNumber(const base::Block& identify);

// Whether the drive says that it has no S.M.A.R.T. False is no promise that it has: old drives do
// not say.
bool LacksSMART(const base::Block& identify);

// Whether the drive says that it has self-tests, and logs that READ LOG EXT reads.
bool HasSelfTests(const base::Block& identify);
bool HasLogs(const base::Block& identify);

// In bytes: 512, or what the drive says.
std::uint32_t LogicalSectorSize(const base::Block& identify);

// Puts a question mark in the place of each byte of serial number and revision that is
// neither printable ASCII nor NUL: a line feed there would break a report. NULs stay, as the
// padding of some drives. The rest of the block stays as it is, so its checksum may be wrong now.
void MakePrintable(base::Block& identify);

// Model and serial number as they stand in the data once they are printable, for comparison: a text
// of 60 bytes, or an empty one where the drive has no serial number, so that it may be any.
std::string Identity(base::Block identify);

// Adds to the recorded facts the rotation rate, the form factor and the speed of the link.
void AddIdentify(RecordedFacts& facts, const base::Block& identify);

// Puts an X in the place of each character of the serial number; blanks and NULs stay. The world
// wide name, the serial number of the medium and the vendor's own words become zero, and a checksum
// that was right is made right again.
void MaskIdentity(base::Block& identify);

}  // namespace drives
