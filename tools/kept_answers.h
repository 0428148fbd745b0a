// What an earlier recording of this host still tells of drives that sleep.
#pragma once

#include <string>

#include "machines/linux/ata_drive.h"

namespace tools {

// The answers in the recording `file` that came within the last `days`, each found by the model and
// the serial number in its IDENTIFY DEVICE data; not those of a drive that could not be opened,
// that has no serial number, or that shares it with another. Never empty. Where the file is missing
// there are none; where it cannot be read or is no recording there are none either, and `program`
// says so in one line on standard error.
machines::KeptAnswers ReadKeptAnswers(const char* program, const std::string& file, int days);

}  // namespace tools
