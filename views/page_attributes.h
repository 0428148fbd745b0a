// The attributes and the figures of logs on the page: tables for each drive, and what the
// attributes mean.
#pragma once

#include <string>

#include "drives/facts.h"
#include "health/health.h"

namespace views {

// Appends the table of the drive's attributes; nothing where it has none.
void AppendAttributes(std::string& page, const drives::Drive& drive, const health::Health& health);

// Appends the table of the figures in the drive's logs; nothing where there are none.
void AppendFigures(std::string& page, const drives::Drive& drive, const health::Health& health);

// Appends the table of the self-tests in the drive's log; nothing where there are none.
void AppendSelfTests(std::string& page, const drives::Drive& drive);

// Appends what the attributes of any of the drives mean, folded away; nothing where none is known.
void AppendMeanings(std::string& page, const drives::Host& host);

}  // namespace views
