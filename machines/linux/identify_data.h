// What the IDENTIFY DEVICE data tell of a drive, and where they lie in the page in which
// the kernel keeps them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/machine.h"

namespace machines {

// The IDENTIFY DEVICE data in an ATA Information page (89h of the vital product data).
// Nothing: the page is too short or another, the data are zeros, or they are those of a
// packet device such as an optical drive.
std::optional<platform::Drive::Block> FindIdentifyData(std::string_view page);

// The model number, in reading order and printable.
std::string ModelNumber(const platform::Drive::Block& identify);

// Whether the drive says that it has no S.M.A.R.T.: old drives say neither.
bool LacksSMART(const platform::Drive::Block& identify);

// Puts a question mark in the place of each byte of serial number and revision that is
// neither printable ASCII nor NUL: a line feed there would break a report.
void MakePrintable(platform::Drive::Block& identify);

// Whether the drive itself has a serial interface.
bool IsSerialATA(const platform::Drive::Block& identify);

}  // namespace machines
