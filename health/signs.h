// The signs of trouble beside the thresholds, in what a recording knows of a drive.
#pragma once

#include <string>
#include <vector>

#include "drives/facts.h"
#include "health/health.h"

namespace health {

// Adds the reasons that the facts give, in this order: losses, counts that are not clear, the last
// self-test, wear, temperature, an answer that is missing, and the age of the answers.
void AddSigns(std::vector<Reason>& reasons, const drives::RecordedFacts& facts);

// Whether a self-test with that status found a fault, or could not go on because of one.
bool IsFailedSelfTest(int status);

// What a study found of many drives with such a reason, a sentence. Empty where it found nothing,
// and for a drive without moving parts, which it did not look at.
std::string StudyText(const Reason& reason, const drives::Drive& drive);

}  // namespace health
