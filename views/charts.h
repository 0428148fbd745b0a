// Small pictures on the page of what a drive told over time.
#pragma once

#include <string>

#include "drives/facts.h"

namespace views {

// Appends a picture each of temperature, lost sectors and wear, as far as at least two answers of
// the drive have them; nothing where none has.
void AppendCharts(std::string& page, const drives::Drive& drive);

}  // namespace views
