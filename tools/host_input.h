// The facts of a host: from a report, from a recording, or from this host itself.
#pragma once

#include <string>

#include "drives/facts.h"

namespace tools {

// What the report or the recording in the file says; "-" is standard input. Throws
// std::runtime_error, which names the file, for a recording that cannot be shown, and as
// base::ReadUpTo does. A damaged report is no error: the result describes the damage.
drives::Host ReadHostFile(const std::string& file);

// Asks the drives of this host (tools/this_host.h).
drives::Host ReadThisHost();

}  // namespace tools
