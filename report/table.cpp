// The report as a table: a heading a drive, and its attributes in columns.
#include <array>
#include <string_view>
#include <vector>

#include "base/printable_text.h"
#include "report/columns.h"
#include "report/figures.h"
#include "report/forms.h"
#include "report/health.h"
#include "report/text.h"

namespace report {
namespace {

// The first indents the rows below their drive.
constexpr std::array kColumns{Column{"   ID", true}, Column{"Name", false},
                              Column{"Value", true}, Column{"Threshold", true},
                              Column{"Kind", false}, Column{"Status", false}};

Row RowOf(const Attribute& attribute) {
  const Health health = HealthOf(attribute);
  return {{std::to_string(attribute.id), base::OneLine(attribute.name), ValueText(attribute.value),
           ThresholdText(attribute.threshold), attribute.preFailure ? "pre-failure" : "life-span",
           std::string(HealthWord(health))},
          health};
}

std::vector<Row> RowsOf(const Drive& drive) {
  std::vector<Row> rows;
  for (const Attribute& attribute : drive.attributes) rows.push_back(RowOf(attribute));
  return rows;
}

void AppendField(std::string& heading, std::string_view label, std::string_view field) {
  const std::string_view trimmed = Trim(field);
  if (!trimmed.empty()) heading.append(", ").append(label).append(base::OneLine(trimmed));
}

std::string Heading(const Drive& drive) {
  std::string heading = PathText(drive.device);
  AppendField(heading, "", drive.product);
  AppendField(heading, "revision ", drive.revision);
  AppendField(heading, "", drive.capacity);
  AppendField(heading, "serial ", drive.serial);
  return heading + ": ";
}

void AppendDrive(std::string& text, const Drive& drive, bool hasColors) {
  if (!text.empty()) text += '\n';
  const Health health = HealthOf(drive);
  text.append(Heading(drive)).append(Colored(HealthWord(health), health, hasColors)).append("\n");
  if (!drive.attributes.empty()) AppendRows(text, kColumns, RowsOf(drive), hasColors);
}

}  // namespace

std::string TableText(const Report& report, bool hasColors) {
  std::string text;
  for (const Drive& drive : report.drives) AppendDrive(text, drive, hasColors);
  AppendEnd(text, report, hasColors);
  return text;
}

}  // namespace report
