// The signs of trouble beside the thresholds, in what a recording knows of a drive.
#pragma once

#include <vector>

#include "drives/facts.h"
#include "health/health.h"

namespace health {

// Adds the reasons that the facts give, in this order: losses, counts that are not clear, the last
// self-test, wear, temperature, and the age of the answers.
void AddSigns(std::vector<Reason>& reasons, const drives::RecordedFacts& facts);

// Whether the last self-test of that status ran to its end, and failed.
bool IsFailedSelfTest(int status);

}  // namespace health
