// The forms for a terminal: a row an attribute or a row a drive, and at the end the devices that
// could not be read, those that are gone, and the disks that were not asked.
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "health/health.h"
#include "views/columns.h"
#include "views/field_texts.h"
#include "views/views.h"

namespace views {
namespace {

using drives::Attribute;
using drives::Drive;
using drives::Host;
using drives::UnreadDrive;
using health::Color;
using health::Grade;
using health::GradeRow;

// Appends what is not among the drives, after an empty line where `text` has some. For a whole
// report of nothing it says that there are no drives: no output would look like success.
void AppendEnd(std::string& text, const Host& host, const Screen& screen) {
  const bool hasNone = text.empty() && host.notRead.empty() && host.gone.empty();
  if (hasNone && !host.damage) text = "No drives.\n";
  if (!text.empty() && !host.notRead.empty()) text += '\n';
  if (!host.notRead.empty()) text += "Could not be read:\n";
  for (const UnreadDrive& drive : host.notRead) {
    AppendParagraph(text, "  ", UnreadText(drive), RowOf(Grade::kNotRead).color, screen);
  }
  if (!text.empty() && !host.gone.empty()) text += '\n';
  for (const drives::GoneDrive& gone : host.gone) {
    AppendParagraph(text, "", GoneText(gone), RowOf(health::GradeOf(gone)).color, screen);
  }
  const std::string age = AgeText(host);
  if (!age.empty()) text += '\n';
  if (!age.empty()) AppendParagraph(text, "", age, Color::kWarning, screen);
  const std::vector<std::string> others = OtherDisksTexts(host);
  if (!others.empty()) text += '\n';
  for (const std::string& other : others) {
    AppendParagraph(text, "", other, Color::kGood, screen);
  }
}

constexpr std::array kAttributeColumns{Column{"  ID", true},     Column{"Name", false, 1, 8},
                                       Column{"Value", true},    Column{"Worst", true, 3},
                                       Column{"Thresh.", true},  Column{"Raw", true, 4},
                                       Column{"Kind", false, 2}, Column{"Status"}};

std::vector<Row> RowsOf(const Drive& drive, const health::Health& health) {
  std::vector<Row> rows;
  for (const Attribute& attribute : drive.attributes) {
    rows.push_back(
        {{std::to_string(attribute.id), health::NameText(attribute),
          std::to_string(attribute.value), WorstText(attribute),
          std::to_string(attribute.threshold), RawText(attribute) + GrowthText(drive, attribute),
          attribute.preFailure ? "pre-fail" : "life-span", RowText(health, attribute)},
         RowOf(RowGrade(health, attribute)).color});
  }
  return rows;
}

constexpr std::array kFigureColumns{Column{"Name", false, 2, 8}, Column{"Value", true, 1, 20},
                                    Column{"Status"}};

std::vector<Row> FigureRowsOf(const Drive& drive, const health::Health& health) {
  std::vector<Row> rows;
  for (const drives::Figure& figure : drive.recorded->figures) {
    rows.push_back(
        {{figure.name, FigureText(figure) + GrowthText(drive, figure), RowText(health, figure)},
         RowOf(FigureGrade(health, figure)).color});
  }
  return rows;
}

constexpr std::array kSelfTestColumns{Column{"Self-test"}, Column{"Result", false, 1, 12},
                                      Column{"Power-on time", false, 3, 8},
                                      Column{"Sector", true, 2, 8}};

// The last ones; the page has all.
std::vector<Row> SelfTestRowsOf(const Drive& drive) {
  constexpr std::size_t kShown = 5;
  std::vector<Row> rows;
  for (const drives::SelfTest& test : drive.recorded->selfTests) {
    if (rows.size() == kShown) break;
    const auto [type, status, hours, sector] = TextsOf(test, drive);
    const Grade grade = test.passed == false ? Grade::kCaution : Grade::kGood;
    rows.push_back({{type, status, hours, sector}, RowOf(grade).color});
  }
  return rows;
}

void AppendDrive(std::string& text, const Drive& drive, const Screen& screen) {
  if (!text.empty()) text += '\n';
  const health::Health health = health::HealthOf(drive);
  AppendParagraph(text, "", PathText(drive) + ": " + HealthText(health), RowOf(health.grade).color,
                  screen);
  const std::string description = DescriptionText(drive);
  if (!description.empty()) AppendParagraph(text, "  ", description, Color::kGood, screen);
  if (!drive.attributes.empty()) AppendRows(text, kAttributeColumns, RowsOf(drive, health), screen);
  if (!drive.recorded) return;
  if (!drive.recorded->figures.empty())
    AppendRows(text, kFigureColumns, FigureRowsOf(drive, health), screen);
  if (!drive.recorded->selfTests.empty())
    AppendRows(text, kSelfTestColumns, SelfTestRowsOf(drive), screen);
}

constexpr std::array kDriveColumns{
    Column{"Device", false, 5, 16}, Column{"Product", false, 1, 8},
    Column{"Capacity", true, 2},    Column{"Serial number", false, 4, 8},
    Column{"Temp.", true, 3},       Column{"Health"}};

Row RowOf(const Drive& drive) {
  const health::Health health = health::HealthOf(drive);
  const GradeRow& grade = RowOf(health.grade);
  return {{PathText(drive), FieldText(drive.product), FieldText(drive.capacity),
           FieldText(drive.serial), TemperatureText(drive), std::string(grade.word)},
          grade.color,
          ReasonsText(health)};
}

}  // namespace

std::string TableText(const Host& host, const Screen& screen) {
  std::string text;
  for (const Drive& drive : host.drives) AppendDrive(text, drive, screen);
  AppendEnd(text, host, screen);
  return text;
}

std::string BriefText(const Host& host, const Screen& screen) {
  std::vector<Row> rows;
  for (const Drive& drive : host.drives) rows.push_back(RowOf(drive));
  std::string text;
  if (!rows.empty()) AppendRows(text, kDriveColumns, rows, screen);
  AppendEnd(text, host, screen);
  return text;
}

}  // namespace views
