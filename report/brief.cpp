// The report as a table of one line a drive, with its weakest figure.
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "base/printable_text.h"
#include "report/columns.h"
#include "report/forms.h"
#include "report/health.h"
#include "report/text.h"

namespace report {
namespace {

constexpr std::array kColumns{Column{"Device", false},  Column{"Product", false},
                              Column{"Capacity", true}, Column{"Serial number", false},
                              Column{"Health", false},  Column{"Nearest to threshold", false},
                              Column{"Value", true},    Column{"Threshold", true}};

constexpr const char* kNothing = "-";

// An empty cell would be hard to see among the others.
std::string Cell(std::string_view field) {
  const std::string_view trimmed = Trim(field);
  return trimmed.empty() ? kNothing : base::OneLine(trimmed);
}

Row RowOf(const Drive& drive) {
  const Health health = HealthOf(drive);
  Row row{{PathText(drive.device), Cell(drive.product), Cell(drive.capacity), Cell(drive.serial),
           std::string(HealthWord(health))},
          health};
  const Attribute* nearest = NearestToThreshold(drive);
  if (nearest == nullptr) {
    row.cells.insert(row.cells.end(), 3, kNothing);
  } else {
    row.cells.insert(row.cells.end(), {Cell(nearest->name), std::to_string(nearest->value),
                                       std::to_string(nearest->threshold)});
  }
  return row;
}

}  // namespace

std::string BriefText(const Report& report, bool hasColors) {
  std::vector<Row> rows;
  for (const Drive& drive : report.drives) rows.push_back(RowOf(drive));
  std::string text;
  if (!rows.empty()) AppendRows(text, kColumns, rows, hasColors);
  AppendEnd(text, report, hasColors);
  return text;
}

}  // namespace report
