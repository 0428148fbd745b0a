// From the facts of a drive to its grade, and the reasons for it.
#pragma once

#include <string>
#include <vector>

#include "drives/facts.h"
#include "health/grades.h"

namespace health {

// Whether the attribute's threshold is reached, as the report's status has it; a threshold that the
// report calls invalid is never reached. Value and threshold are not compared again.
bool IsReached(const drives::Attribute& attribute);

// kGood, or what a threshold that is reached means: of a pre-failure attribute kFailing, of a
// temperature kHot, else kWorn.
Grade GradeOf(const drives::Attribute& attribute);

struct Reason {
  Grade grade;  // kGood: it is worth saying, and makes no grade
  std::string text;
};

struct Health {
  Grade grade = Grade::kGood;
  std::vector<Reason> reasons = {};
};

// The drive's own word, its attributes and its sectors, in this order; the worst reason makes the
// grade. kNoAttributes where the drive has none, and no reason is worse.
Health HealthOf(const drives::Drive& drive);

// Whether a raw value that should count lost sectors is no clear count.
bool HasUnclearCount(const drives::Drive& drive);

// The texts of the reasons, for one line: "Reallocated Sector Count is 7, threshold 36: failure
// predicted; 69 sectors reallocated". Empty where there are none.
std::string ReasonsText(const Health& health);

// The attribute's name for one line, or "attribute 187" where the report has no name of it.
std::string NameText(const drives::Attribute& attribute);

}  // namespace health
