// The forms for a terminal: a row an attribute or a row a drive, and at the end the devices that
// could not be read and the disks that nobody looked at.
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "base/printable_text.h"
#include "report/columns.h"
#include "report/field_texts.h"
#include "report/forms.h"
#include "report/health.h"

namespace report {
namespace {

// Appends what is not among the drives, after an empty line where `text` has some. For a whole
// report of nothing it says that there are no drives: no output would look like success.
void AppendEnd(std::string& text, const Report& report, const Screen& screen) {
  if (text.empty() && report.notRead.empty() && !report.damage) text = "No drives.\n";
  if (!text.empty() && !report.notRead.empty()) text += '\n';
  if (!report.notRead.empty()) text += "Could not be read:\n";
  for (const UnreadDrive& drive : report.notRead) {
    AppendParagraph(text, "  ", UnreadText(drive), Health::kFailing, screen);
  }
  const std::vector<std::string> others = OtherDisksTexts(report);
  if (!others.empty()) text += '\n';
  for (const std::string& other : others) {
    AppendParagraph(text, "", other, Health::kGood, screen);
  }
}

constexpr std::array kAttributeColumns{Column{"  ID", true},     Column{"Name", false, 1, 8},
                                       Column{"Value", true},    Column{"Worst", true, 3},
                                       Column{"Thresh.", true},  Column{"Raw", true, 4},
                                       Column{"Kind", false, 2}, Column{"Status"}};

std::vector<Row> RowsOf(const Drive& drive) {
  std::vector<Row> rows;
  for (const Attribute& attribute : drive.attributes) {
    const Health health = HealthOf(attribute);
    rows.push_back(
        {{std::to_string(attribute.id), NameText(attribute), std::to_string(attribute.value),
          WorstText(attribute), std::to_string(attribute.threshold), RawText(attribute),
          attribute.preFailure ? "pre-fail" : "life-span", std::string(HealthWord(health))},
         health});
  }
  return rows;
}

void AppendDrive(std::string& text, const Drive& drive, const Screen& screen) {
  if (!text.empty()) text += '\n';
  AppendParagraph(text, "", PathText(drive.device) + ": " + HealthText(drive), HealthOf(drive),
                  screen);
  const std::string description = DescriptionText(drive);
  if (!description.empty()) AppendParagraph(text, "  ", description, Health::kGood, screen);
  if (!drive.attributes.empty()) AppendRows(text, kAttributeColumns, RowsOf(drive), screen);
}

constexpr std::array kDriveColumns{
    Column{"Device", false, 5, 16}, Column{"Product", false, 1, 8},
    Column{"Capacity", true, 2},    Column{"Serial number", false, 4, 8},
    Column{"Temp.", true, 3},       Column{"Health"}};

Row RowOf(const Drive& drive) {
  const Health health = HealthOf(drive);
  return {{PathText(drive.device), FieldText(drive.product), FieldText(drive.capacity),
           FieldText(drive.serial), TemperatureText(drive), std::string(HealthWord(health))},
          health,
          FaultsText(drive)};
}

}  // namespace

std::string TableText(const Report& report, const Screen& screen) {
  std::string text;
  for (const Drive& drive : report.drives) AppendDrive(text, drive, screen);
  AppendEnd(text, report, screen);
  return text;
}

std::string BriefText(const Report& report, const Screen& screen) {
  std::vector<Row> rows;
  for (const Drive& drive : report.drives) rows.push_back(RowOf(drive));
  std::string text;
  if (!rows.empty()) AppendRows(text, kDriveColumns, rows, screen);
  AppendEnd(text, report, screen);
  return text;
}

}  // namespace report
