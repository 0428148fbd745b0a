// What a drive told over time, and what grew.
#pragma once

#include <vector>

#include "drives/facts.h"

namespace drives {

// Whether both counts come from the same attribute or figure, so that they can be compared.
bool IsSameSource(const LossCount& one, const LossCount& other);

// What of the facts changes with time. They must have a date.
Moment MomentOf(const RecordedFacts& facts);

// Adds to the facts, which have a date, what the drive told before, the oldest first, and how much
// each count has grown since the least that it was within kGrowthDays, counted in days of the
// calendar. Only counts of the same source are compared.
void AddHistory(RecordedFacts& facts, std::vector<Moment> earlier);

}  // namespace drives
