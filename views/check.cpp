// The forms for monitoring and for the mail: one line with a verdict, and what to do.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <ranges>

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

// From good to bad.
constexpr int Rank(Verdict verdict) {
  constexpr std::array kOrder = {Verdict::kOk, Verdict::kWarning, Verdict::kUnknown,
                                 Verdict::kCritical};
  return static_cast<int>(std::ranges::find(kOrder, verdict) - kOrder.begin());
}

// "/dev/rdisk0", of a drive to look after with what is wrong.
std::string DriveText(const Drive& drive, const health::Health& health) {
  Texts reasons;
  for (const auto& [grade, text] : health.reasons) {
    if (grade == Grade::kCaution) reasons.push_back(text);
  }
  const bool isListed = health.grade == Grade::kCaution;
  return PathText(drive.device) +
         (isListed ? fmt::format(" ({})", fmt::join(reasons, ", ")) : std::string());
}

std::string UnreadDriveText(const UnreadDrive& drive) {
  const std::string names = NamesText(drive);
  return PathText(drive.device) + (names.empty() ? "" : fmt::format(" ({})", names));
}

// The drives of that grade.
Texts TextsOf(const Host& host, Grade grade) {
  Texts texts;
  for (const Drive& drive : host.drives) {
    const health::Health health = health::HealthOf(drive);
    if (health.grade == grade) texts.push_back(DriveText(drive, health));
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

Texts PathsWithUnclearCounts(const Host& host) {
  Texts paths;
  for (const Drive& drive : host.drives) {
    if (health::HasUnclearCount(drive)) paths.push_back(PathText(drive.device));
  }
  return paths;
}

std::string CountText(const Host& host) {
  const std::size_t count = host.drives.size();
  return count == 0 ? "no drives" : fmt::format("{} drive{}", count, count == 1 ? "" : "s");
}

// What a good verdict rests on.
std::string_view Grounds(const Host& host, bool isUnclear) {
  const bool countsSectors = host.others && !isUnclear;
  return countsSectors ? ", no threshold reached, no lost sector counted"
                       : ", no threshold reached";
}

}  // namespace

Judgement Check(const Host& host, const Texts& faults) {
  const bool isUnknown = host.drives.empty() || host.damage || !faults.empty();
  Verdict verdict = isUnknown ? Verdict::kUnknown : Verdict::kOk;
  Texts groups;
  for (const GradeRow& row : health::Grades() | std::views::reverse) {
    const Texts texts = TextsOf(host, row.grade);
    if (!texts.empty())
      verdict = std::max(verdict, row.verdict,
                         [](Verdict one, Verdict other) { return Rank(one) < Rank(other); });
    if (!row.heading.empty()) AddGroup(groups, row.heading, texts);
    if (row.grade == Grade::kNotRead) AddGroup(groups, "", LinesOf(faults));
  }
  const Texts unclear = PathsWithUnclearCounts(host);
  if (groups.empty()) {
    groups.push_back(CountText(host));
    if (!isUnknown) groups.back() += Grounds(host, !unclear.empty());
  }
  AddGroup(groups, "sector count not clear", unclear);
  for (const std::string& text : OtherDisksTexts(host)) groups.push_back(text);
  return {verdict, fmt::format("smartprobe {}: {}", VerdictWord(verdict), fmt::join(groups, "; "))};
}

std::string AdviceText(const Host& host) {
  std::string text;
  for (const GradeRow& row : health::Grades() | std::views::reverse) {
    if (!row.advice.empty() && !TextsOf(host, row.grade).empty()) {
      text.append(row.advice).append("\n");
    }
  }
  return text;
}

}  // namespace views
