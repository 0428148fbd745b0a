// The page: one document of HTML without a script, a font or anything else from elsewhere. Every
// text of a drive goes through Escaped().
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "base/dates.h"
#include "health/health.h"
#include "health/signs.h"
#include "page_style.h"
#include "views/charts.h"
#include "views/field_texts.h"
#include "views/html.h"
#include "views/page_attributes.h"
#include "views/views.h"

namespace views {
namespace {

using drives::Drive;
using drives::Host;
using health::Color;
using health::Grade;
using health::GradeRow;

struct JudgedDrive {
  const Drive* drive;
  std::size_t number;  // among the host's drives, from 1
  health::Health health;
  const GradeRow* grade;
};
using Drives = std::vector<JudgedDrive>;

Drives WorstFirst(const Host& host) {
  Drives drives;
  for (const Drive& drive : host.drives) {
    health::Health health = health::HealthOf(drive);
    const GradeRow& grade = health::RowOf(health.grade);
    drives.push_back({&drive, drives.size() + 1, std::move(health), &grade});
  }
  std::ranges::stable_sort(drives, std::ranges::greater(),
                           [](const JudgedDrive& drive) { return drive.health.grade; });
  return drives;
}

// "1 failing, 1 not read, 2 OK": the grades, the worst first.
std::string CountsText(const Host& host, const Drives& drives) {
  std::vector<std::string> texts;
  for (const GradeRow& row : health::Grades()) {
    auto count = static_cast<std::size_t>(std::ranges::count(drives, &row, &JudgedDrive::grade));
    if (row.grade == Grade::kNotRead) count += host.notRead.size();
    count += static_cast<std::size_t>(std::ranges::count(
        host.gone, row.grade, [](const drives::GoneDrive& gone) { return health::GradeOf(gone); }));
    if (count > 0) texts.push_back(fmt::format("{} {}", count, row.word));
  }
  return texts.empty() ? "none" : fmt::format("{}", fmt::join(texts, ", "));
}

void AppendItem(std::string& page, std::string_view text, Color color) {
  Append(page, "<li class=\"{}\">{}</li>\n", ClassOf(color), Escaped(text));
}

// What a clean bill rests on.
std::string_view AllClearText(const Host& host) {
  if (!host.recorded) return "No threshold is reached. Lost sectors are not in the report.";
  return health::CountsNoLoss(host)
             ? "No threshold is reached, and no drive counts a lost sector."
             : "No threshold is reached. Some drives do not count lost sectors.";
}

// A reason with what to do about it, and what is known of other drives.
void AppendReason(std::string& items, const health::Reason& reason, const Drive& drive) {
  const GradeRow& row = health::RowOf(reason.grade);
  Append(items, "<li class=\"{}\">{}", ClassOf(row.color), Escaped(reason.text));
  const std::string study = health::StudyText(reason, drive);
  const std::string_view blank = row.advice.empty() || study.empty() ? "" : " ";
  const std::string text = fmt::format("{}{}{}", row.advice, blank, study);
  if (!text.empty()) Append(items, "<p class=\"weak\">{}</p>", text);
  items += "</li>\n";
}

// "failing: Maxtor 6L200P0 (/dev/sda)", with a link to the drive, and its reasons.
void AppendDriveItem(std::string& items, const JudgedDrive& judged) {
  const GradeRow& row = *judged.grade;
  const std::string product = FieldText(judged.drive->product);
  const std::string path = PathText(*judged.drive);
  Append(items, R"(<li class="{}">{}: <a href="#drive{}">{}</a>)", ClassOf(row.color), row.word,
         judged.number, Escaped(product.empty() ? path : product + " (" + path + ")"));
  if (!judged.health.reasons.empty()) {
    items += "\n<ul>\n";
    for (const health::Reason& reason : judged.health.reasons)
      AppendReason(items, reason, *judged.drive);
    items += "</ul>";
  } else {
    Append(items, "<p class=\"weak\">{}</p>", row.advice);
  }
  items += "</li>\n";
}

// The drives of a grade, where there is anything to say of them.
void AppendItems(std::string& items, const Host& host, const Drives& drives, const GradeRow& row) {
  for (const JudgedDrive& judged : drives) {
    const bool isClear =
        row.grade == Grade::kGood &&
        std::ranges::none_of(judged.health.reasons, &health::Reason::limitsJudgement);
    if (judged.grade == &row && !isClear) AppendDriveItem(items, judged);
  }
  for (const drives::GoneDrive& gone : host.gone) {
    if (health::GradeOf(gone) != row.grade) continue;
    Append(items, "<li class=\"{}\">{}<p class=\"weak\">{}</p></li>\n", ClassOf(row.color),
           Escaped(GoneText(gone)), RowOf(Grade::kGone).advice);
  }
  if (row.grade != Grade::kNotRead) return;
  for (const drives::UnreadDrive& drive : host.notRead) {
    Append(items, "<li class=\"{}\">could not be read: {}<p class=\"weak\">{}</p></li>\n",
           ClassOf(row.color), Escaped(UnreadText(drive)), row.advice);
  }
}

void AppendFaults(std::string& page, const Host& host, const Drives& drives) {
  page += "<h2>What is wrong</h2>\n";
  std::string items;
  if (host.damage) {
    AppendItem(items,
               "The report is damaged; this is what came before. " + DamageText(*host.damage),
               Color::kBad);
  }
  const std::string age = AgeText(host);
  if (!age.empty()) AppendItem(items, age, Color::kWarning);
  for (const GradeRow& row : health::Grades()) {
    AppendItems(items, host, drives, row);
  }
  if (drives.empty() && host.notRead.empty() && host.gone.empty()) {
    AppendItem(items, "No drives were found.", Color::kWarning);
  }
  if (items.empty()) {
    Append(page, "<p>{}</p>\n", AllClearText(host));
  } else {
    Append(page, "<ul>\n{}</ul>\n", items);
  }
}

void AppendFact(std::string& page, std::string_view name, std::string_view fact) {
  if (fact.empty()) return;
  Append(page, "<div><dt>{}</dt><dd>{}</dd></div>\n", name, Escaped(fact));
}

void AppendFacts(std::string& page, const Drive& drive) {
  page += "<dl>\n";
  AppendFact(page, "Path", PathText(drive));
  AppendFact(page, "Serial number", FieldText(drive.serial));
  AppendFact(page, "Revision", FieldText(drive.revision));
  AppendFact(page, "Capacity", FieldText(drive.capacity));
  AppendFact(page, "Rotation", RotationText(drive));
  if (drive.recorded) AppendFact(page, "Form factor", drive.recorded->formFactor);
  if (drive.recorded) AppendFact(page, "Link", drive.recorded->linkSpeed);
  AppendFact(page, "Power-on time", PowerOnText(drive));
  AppendFact(page, "Power cycles", PowerCyclesText(drive));
  AppendFact(page, "Temperature", TemperatureText(drive));
  AppendFact(page, "Temperature limit", TemperatureLimitText(drive));
  AppendFact(page, "Written", WrittenText(drive));
  AppendFact(page, "Life used", UsedText(drive));
  AppendFact(page, "Read", ReadDateText(drive));
  page += "</dl>\n";
}

void AppendDrive(std::string& page, const JudgedDrive& judged) {
  const auto& [drive, number, health, grade] = judged;
  const std::string_view color = ClassOf(grade->color);
  const std::string product = FieldText(drive->product);
  Append(page,
         "<section class=\"{0}\" id=\"drive{1}\">\n<h3>{2}: <span class=\"{0}\">{3}</span></h3>\n",
         color, number, Escaped(product.empty() ? PathText(*drive) : product), grade->word);
  AppendFacts(page, *drive);
  const std::string reasons = ReasonsText(health);
  if (!reasons.empty()) Append(page, "<p class=\"{}\">{}</p>\n", color, Escaped(reasons));
  AppendCharts(page, *drive);
  AppendAttributes(page, *drive, health);
  AppendFigures(page, *drive, health);
  AppendSelfTests(page, *drive);
  page += "</section>\n";
}

}  // namespace

std::string PageText(const Host& host, std::chrono::sys_seconds date) {
  const Drives drives = WorstFirst(host);
  const std::string origin = OriginText(host);
  const std::string title =
      fmt::format("{}: {}", origin.empty() ? "Drives" : Escaped(origin), CountsText(host, drives));
  std::string page = fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, "
      "initial-scale=1\">\n<title>{0}</title>\n"
      "<style>{1}</style>\n</head>\n<body>\n<h1>{0}</h1>\n<p class=\"weak\">Page of {2}.</p>\n",
      title, kPageStyle, base::DateText(date));
  AppendFaults(page, host, drives);
  if (!drives.empty()) page += "<h2>Drives</h2>\n";
  for (const JudgedDrive& drive : drives) AppendDrive(page, drive);
  AppendMeanings(page, host);
  const std::vector<std::string> others = OtherDisksTexts(host);
  if (!others.empty()) page += "<h2>Not in this report</h2>\n";
  for (const std::string& other : others) Append(page, "<p>{}</p>\n", Escaped(other));
  return page + "</body>\n</html>\n";
}

}  // namespace views
