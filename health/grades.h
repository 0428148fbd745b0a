// The table of grades: what each is called, what it means for a check, how it is coloured and what
// to do about it. Every form takes these from here.
#pragma once

#include <span>
#include <string_view>

namespace health {

// Each is worse than the one before it.
enum class Grade {
  kGood,
  kNoAttributes,  // the drive reports no condition, and nothing else is known of it
  kHot,           // it is too hot, or has reached the life-span threshold of a temperature
  kWorn,          // it is near the end of its life, or has reached another life-span threshold
  kCaution,       // it shows an early sign of failure
  kGone,          // it answered before, and is no longer there
  kNothingKnown,  // it answers, but tells nothing of its health
  kNotRead,       // nothing is known of it: it may be failing
  kFailing,       // it reports its own failure, or has reached a pre-failure threshold
};

// The numbers are the statuses that monitoring plug-ins end with.
enum class Verdict { kOk = 0, kWarning = 1, kCritical = 2, kUnknown = 3 };

enum class Color { kGood, kWarning, kBad };

struct GradeRow {
  Grade grade;
  std::string_view word;     // what people see beside the drive
  std::string_view heading;  // of the paths of such drives, in a check; empty: they are not listed
  std::string_view advice;   // a sentence; empty where there is nothing to do
  Verdict verdict;
  Color color;
};

// The worst grade first.
std::span<const GradeRow> Grades();

const GradeRow& RowOf(Grade grade);

}  // namespace health
