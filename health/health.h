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

// A thing worth saying of a drive. The worst makes the drive's grade. One of kGood makes no grade.
struct Reason {
  Grade grade;
  std::string text;                    // for one line
  std::vector<std::uint8_t> ids = {};  // every row of these attributes is marked with the grade
  std::vector<const drives::Figure*> figures = {};  // these are marked too; borrowed from the drive
  bool isOfCount = false;                           // which grows by itself
  bool limitsJudgement = false;  // something is not known, or is old: this drive is not clear
};

struct Health {
  Grade grade = Grade::kGood;
  std::vector<Reason> reasons = {};
};

// The worst reason makes the grade. kNoAttributes where an ATA drive has none, and no reason is
// worse. The health may be used as long as the drive.
Health HealthOf(const drives::Drive& drive);

// The worst grade of the row's own threshold and of the reasons that mark rows of the attribute.
Grade RowGrade(const Health& health, const drives::Attribute& attribute);

// The worst grade of the reasons that mark the figure, which is one of the drive's.
Grade FigureGrade(const Health& health, const drives::Figure& figure);

// kFailing where the drive was failing when it was last read, else kGone.
Grade GradeOf(const drives::GoneDrive& gone);

// Whether every drive of the host counts what it loses, and each count is clear and 0.
bool CountsNoLoss(const drives::Host& host);

// The texts of the reasons, for one line: "Reallocated Sector Count is 7, threshold 36: failure
// predicted; 69 sectors reallocated". Empty where there are none.
std::string ReasonsText(const Health& health);

// The attribute's name for one line, or "attribute 187" where the report has no name of it.
std::string NameText(const drives::Attribute& attribute);

}  // namespace health
