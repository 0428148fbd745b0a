// From the facts of a drive to its grade, and the reasons for it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "drives/facts.h"
#include "health/grades.h"

namespace health {

// Whether the attribute's threshold is reached, as the report's status has it; a threshold that the
// report calls invalid is never reached. Value and threshold are not compared again.
bool IsReached(const drives::Attribute& attribute);

// Whether the worst value was at a valid threshold, and the value is above it.
bool WasReached(const drives::Attribute& attribute);

// kGood, or what a threshold that is reached means: of a pre-failure attribute kFailing, of a
// temperature kHot, else kWorn.
Grade GradeOf(const drives::Attribute& attribute);

// Why a drive has its grade, or a better one. One of kGood makes no grade: it says what keeps the
// drive from being judged by all that it could tell, or what else is worth knowing.
struct Reason {
  Grade grade;
  std::string text;                    // for one line
  std::vector<std::uint8_t> ids = {};  // of attributes: any row of these is about it
  bool limitsJudgement = false;        // of kGood: something is not known, or old
};

struct Health {
  Grade grade = Grade::kGood;
  std::vector<Reason> reasons = {};
};

// The worst reason makes the grade. kNoAttributes where the drive has none, and no reason is worse.
Health HealthOf(const drives::Drive& drive);

// What the row of the attribute shows: the worst of what its own threshold says and of the reasons
// that any row of the attribute is about.
Grade RowGrade(const Health& health, const drives::Attribute& attribute);

// The texts of the reasons, for one line: "Reallocated Sector Count is 7, threshold 36: failure
// predicted; 69 sectors reallocated". Empty where there are none.
std::string ReasonsText(const Health& health);

// What a study found of many drives with such a reason, a sentence. Empty where it found nothing, and
// for a drive without moving parts, which it did not look at.
std::string StudyText(const Reason& reason, const drives::Drive& drive);

// The attribute's name for one line, or "attribute 187" where the report has no name of it.
std::string NameText(const drives::Attribute& attribute);

}  // namespace health
