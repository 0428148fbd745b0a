// The signs of trouble beside the thresholds, in what a recording knows of a drive.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "drives/facts.h"
#include "health/health.h"

namespace health {

// Adds the reasons that the facts give, in this order: losses, counts that are not clear, the last
// self-test, wear, temperature, an answer that is missing, and the age of the answers.
void AddSigns(std::vector<Reason>& reasons, const drives::RecordedFacts& facts);

// Whether the last self-test that came to an end found a fault. nullopt where nothing is known of
// any.
std::optional<bool> HasFailedSelfTest(const drives::RecordedFacts& facts);

// Whether the drive's temperature is above its limit, or a few degrees below it.
bool IsNearLimit(const drives::Drive& drive);

// What a study found of many drives with such a reason, a sentence. Empty where it found nothing,
// and for a drive without moving parts, which it did not look at.
std::string StudyText(const Reason& reason, const drives::Drive& drive);

}  // namespace health
