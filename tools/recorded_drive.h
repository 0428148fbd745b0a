// The facts of one drive of a recorded machine, from its answers.
#pragma once

#include <string>
#include <string_view>

#include "drives/facts.h"
#include "platform/machine.h"

namespace tools {

// `text`, which may be any in a registry, but no name is longer than 255 characters.
std::string Name(std::string_view text);

// By the entry's class, and of disks that do not speak ATA by their logs.
drives::Protocol ProtocolOf(const platform::Entry& device);

// Adds to the drive, which has its protocol, what it answered now and before. Returns why that says
// nothing, in words, or an empty text.
std::string AddAnswers(drives::Drive& drive, const platform::Entry& device);

// A device that could not be read. It is named as the report of the drive would name it; what its
// IDENTIFY DEVICE data do not tell, the kernel may.
drives::UnreadDrive MakeUnread(std::string path, const platform::Entry& device);

}  // namespace tools
