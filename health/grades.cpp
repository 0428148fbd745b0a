#include "health/grades.h"

#include <array>
#include <cstddef>

namespace health {
namespace {

using enum Grade;

constexpr std::array kGrades{
    GradeRow{kFailing, "failing", "failing",
             "Save the data of a drive that is failing, and replace it.", Verdict::kCritical,
             Color::kBad},
    GradeRow{
        kNotRead, "not read", "not read",
        "A drive that cannot be read may be failing: look at its cables, and at journalctl -k.",
        Verdict::kUnknown, Color::kBad},
    GradeRow{kNothingKnown, "nothing known", "nothing known",
             "A disk that tells nothing of its health may fail without a sign: keep copies of its "
             "data.",
             Verdict::kUnknown, Color::kWarning},
    GradeRow{kGone, "gone", "gone",
             "If nobody has taken out a drive that is gone, look at its cable and power.",
             Verdict::kWarning, Color::kWarning},
    GradeRow{
        kCaution, "caution", "caution",
        "Save the data of a drive with early signs of failure, and replace it if they get worse.",
        Verdict::kWarning, Color::kWarning},
    GradeRow{kWorn, "worn", "worn",
             "A worn drive is near the end of its life, or past it: plan to replace it.",
             Verdict::kWarning, Color::kWarning},
    GradeRow{kHot, "hot", "hot, now or once", "A hot drive needs more air: look at fans and dust.",
             Verdict::kWarning, Color::kWarning},
    GradeRow{kNoAttributes, "no attributes", "attributes not known",
             "A drive without attributes may fail without a sign: keep copies of its data.",
             Verdict::kWarning, Color::kWarning},
    GradeRow{kGood, "OK", "", "", Verdict::kOk, Color::kGood},
};

}  // namespace

std::span<const GradeRow> Grades() { return kGrades; }

const GradeRow& RowOf(Grade grade) {
  return kGrades.at(kGrades.size() - 1 - static_cast<std::size_t>(grade));
}

}  // namespace health
