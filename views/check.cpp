// The forms for monitoring and for the mail: one line with a verdict, and what to do.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>

#include "base/printable_text.h"
#include "health/health.h"
#include "views/field_texts.h"
#include "views/views.h"

namespace views {
namespace {

using drives::Drive;
using drives::Host;
using drives::UnreadDrive;
using health::Grade;
using health::GradeRow;
using health::Verdict;
using Texts = std::vector<std::string>;

constexpr std::string_view VerdictWord(Verdict verdict) {
  constexpr std::array<std::string_view, 4> kWords = {"OK", "WARNING", "CRITICAL", "UNKNOWN"};
  return kWords.at(static_cast<std::size_t>(verdict));
}

// "/dev/sda (69 sectors reallocated, 75 °C)", with all reasons that make a grade.
std::string DriveText(const Drive& drive, const health::Health& health) {
  Texts reasons;
  for (const health::Reason& reason : health.reasons) {
    if (reason.grade != Grade::kGood) reasons.push_back(reason.text);
  }
  return PathText(drive) +
         (reasons.empty() ? std::string() : fmt::format(" ({})", fmt::join(reasons, ", ")));
}

// "/dev/sda (PRODUCT, serial X: why)"
std::string UnreadDriveText(const UnreadDrive& drive) {
  Texts texts = {NamesText(drive), FieldText(drive.why)};
  std::erase(texts, "");
  return PathText(drive) + (texts.empty() ? "" : fmt::format(" ({})", fmt::join(texts, ": ")));
}

// The drives of that grade.
Texts TextsOf(const Host& host, Grade grade) {
  Texts texts;
  for (const Drive& drive : host.drives) {
    const health::Health health = health::HealthOf(drive);
    if (health.grade == grade) texts.push_back(DriveText(drive, health));
  }
  for (const drives::GoneDrive& gone : host.gone) {
    if (health::GradeOf(gone) == grade) texts.push_back(GoneText(gone));
  }
  if (grade != Grade::kNotRead) return texts;
  for (const UnreadDrive& drive : host.notRead) texts.push_back(UnreadDriveText(drive));
  return texts;
}

void AddGroup(Texts& groups, std::string_view heading, const Texts& texts) {
  if (texts.empty()) return;
  const std::string_view colon = heading.empty() ? "" : ": ";
  groups.push_back(fmt::format("{}{}{}", heading, colon, fmt::join(texts, ", ")));
}

Texts LinesOf(const Texts& texts) {
  Texts lines;
  for (const std::string& text : texts) lines.push_back(base::OneLine(text));
  return lines;
}

// The paths of drives by what limits their judgement.
using Limits = std::map<std::string, Texts>;

Limits LimitsOf(const Host& host) {
  Limits limits;
  for (const Drive& drive : host.drives) {
    for (const health::Reason& reason : health::HealthOf(drive).reasons) {
      const bool isLimit = reason.grade == Grade::kGood && reason.limitsJudgement;
      if (isLimit) limits[reason.text].push_back(PathText(drive));
    }
  }
  return limits;
}

std::string CountText(const Host& host) {
  const std::size_t count = host.drives.size();
  return count == 0 ? "no drives" : fmt::format("{} drive{}", count, count == 1 ? "" : "s");
}

// What a good verdict rests on.
std::string_view Grounds(const Host& host) {
  return health::CountsNoLoss(host) ? ", no threshold reached, no lost sector counted"
                                    : ", no threshold reached";
}

// " | drives=3 failing=0 caution=1 temperature_max=47"; nothing where nothing was read.
std::string PerformanceText(const Host& host) {
  if (host.drives.empty() && host.notRead.empty() && host.gone.empty()) return "";
  Texts texts = {fmt::format("drives={}", host.drives.size())};
  for (const GradeRow& row : health::Grades()) {
    if (row.heading.empty()) continue;
    std::string name(row.word);
    std::ranges::replace(name, ' ', '_');
    texts.push_back(fmt::format("{}={}", name, TextsOf(host, row.grade).size()));
  }
  std::optional<int> hottest;
  for (const Drive& drive : host.drives) {
    if (drive.recorded) hottest = std::max(hottest, drive.recorded->temperature);
  }
  if (hottest) texts.push_back(fmt::format("temperature_max={}", *hottest));
  return fmt::format(" | {}", fmt::join(texts, " "));
}

// What comes after a bar is performance data.
std::string WithoutBars(std::string text) {
  std::ranges::replace(text, '|', '/');
  return text;
}

}  // namespace

Judgement Check(const Host& host, const Texts& faults) {
  const bool hasNone = host.drives.empty() && host.gone.empty();
  const bool isUnknown = hasNone || host.damage || !faults.empty();
  Verdict verdict = Verdict::kOk;
  Texts groups;
  for (const GradeRow& row : health::Grades()) {
    const Texts texts = TextsOf(host, row.grade);
    if (!texts.empty() && verdict == Verdict::kOk) verdict = row.verdict;  // of the worst grade
    const std::string_view heading = row.grade == Grade::kGone ? "" : row.heading;  // it says so
    if (!row.heading.empty()) AddGroup(groups, heading, texts);
    if (row.grade == Grade::kNotRead) AddGroup(groups, "", LinesOf(faults));
  }
  if (isUnknown && verdict != Verdict::kCritical) verdict = Verdict::kUnknown;
  if (groups.empty()) {
    groups.push_back(CountText(host));
    if (!isUnknown) groups.back() += Grounds(host);
  }
  for (const auto& [limit, paths] : LimitsOf(host)) AddGroup(groups, limit, paths);
  for (const std::string& text : OtherDisksTexts(host)) groups.push_back(text);
  const std::string origin = OriginText(host);
  if (!origin.empty()) groups.push_back("recorded on " + origin);
  return {verdict, fmt::format("smartprobe {}: {}{}", VerdictWord(verdict),
                               WithoutBars(fmt::format("{}", fmt::join(groups, "; "))),
                               PerformanceText(host))};
}

std::string AdviceText(const Host& host) {
  std::set<Grade> grades;
  if (!host.notRead.empty()) grades.insert(Grade::kNotRead);
  for (const drives::GoneDrive& gone : host.gone) {
    grades.insert(health::GradeOf(gone));
    grades.insert(Grade::kGone);
  }
  for (const Drive& drive : host.drives) {
    const health::Health health = health::HealthOf(drive);
    grades.insert(health.grade);
    for (const health::Reason& reason : health.reasons) grades.insert(reason.grade);
  }
  std::string text;
  for (const GradeRow& row : health::Grades()) {
    if (!row.advice.empty() && grades.contains(row.grade)) text.append(row.advice).append("\n");
  }
  return text;
}

}  // namespace views
