// The answers of sleeping drives, from an earlier recording of this host.
#pragma once

#include <string>

#include "machines/linux/kept_answers.h"

namespace tools {

// Gives the answers in the recording `file` that are at most `days` days old. Leaves out drives
// that could not be opened, that have no serial number, or whose model and serial number occur
// twice with other answers. The result is never an empty function. A missing file has no answers.
// Neither has one that cannot be read or is no recording: `program` then says so in one line on
// standard error.
machines::KeptAnswers ReadKeptAnswers(const char* program, const std::string& file, int days);

}  // namespace tools
