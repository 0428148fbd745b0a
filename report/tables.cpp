// The forms for people: rows in aligned columns, a row an attribute or a row a drive, with the
// colours of their health, and at the end the devices that could not be read.
#include <utf8.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/printable_text.h"
#include "report/forms.h"
#include "report/health.h"
#include "report/value_texts.h"

namespace report {
namespace {

struct Column {
  std::string_view heading;
  bool isRightAligned;
};

struct Row {
  std::vector<std::string> cells;  // exactly one a column, each UTF-8 for one line
  Health health;
};

constexpr std::string_view kGap = "  ";
constexpr std::size_t kMaxWidth = 40;

using Widths = std::vector<std::size_t>;

// Of each health in turn: none, yellow for those to look after, red.
constexpr std::array<std::string_view, 4> kColors = {"", "\x1b[33m", "\x1b[33m", "\x1b[31m"};

Row Headings(std::span<const Column> columns) {
  Row row{{}, Health::kGood};
  for (const Column& column : columns) row.cells.emplace_back(column.heading);
  return row;
}

// In code points: a character of two columns, or of none, counts as one.
std::size_t Width(std::string_view text) {
  return static_cast<std::size_t>(utf8::unchecked::distance(text.begin(), text.end()));
}

void Widen(Widths& widths, const Row& row) {
  for (std::size_t i = 0; i < widths.size(); ++i) {
    widths[i] = std::max(widths[i], std::min(Width(row.cells[i]), kMaxWidth));
  }
}

// The last column ends its line and is not padded, unless it is on the right.
std::string Padded(const Row& row, std::span<const Column> columns, const Widths& widths) {
  std::string line;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const std::size_t width = Width(row.cells[i]);
    const std::string padding(widths[i] > width ? widths[i] - width : 0, ' ');
    if (i > 0) line += kGap;
    if (columns[i].isRightAligned) line += padding;
    line += row.cells[i];
    if (!columns[i].isRightAligned && i + 1 < columns.size()) line += padding;
  }
  return line;
}

// The escape sequences stand around `line`, so its width has to be settled before.
std::string Colored(std::string_view line, Health health, bool hasColors) {
  const std::string_view color = hasColors ? kColors.at(static_cast<std::size_t>(health)) : "";
  std::string text(color);
  text += line;
  if (!color.empty()) text += "\x1b[0m";
  return text;
}

// Appends the headings and the rows. A cell too wide for any column moves the rest of its row
// and widens no other's, so that one long text does not make every row as long.
void AppendRows(std::string& text, std::span<const Column> columns, const std::vector<Row>& rows,
                bool hasColors) {
  const Row headings = Headings(columns);
  Widths widths(columns.size());
  Widen(widths, headings);
  for (const Row& row : rows) Widen(widths, row);

  text.append(Padded(headings, columns, widths)).append("\n");
  for (const Row& row : rows) {
    text.append(Colored(Padded(row, columns, widths), row.health, hasColors)).append("\n");
  }
}

// Appends the devices that could not be read, after an empty line where `text` has rows. For
// a whole report of nothing it says that there are no drives: no output would look like success.
void AppendEnd(std::string& text, const Report& report, bool hasColors) {
  if (report.notRead.empty()) {
    if (text.empty() && !report.damage) text = "No drives.\n";
    return;
  }
  if (!text.empty()) text += '\n';
  text += "Could not be read:\n";
  for (const std::string& device : report.notRead) {
    text.append(kGap).append(Colored(PathText(device), Health::kFailing, hasColors)).append("\n");
  }
}

// The first indents the rows below their drive.
constexpr std::array kAttributeColumns{Column{"   ID", true}, Column{"Name", false},
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
  const std::string_view trimmed = base::Trimmed(field, " ");
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
  if (!drive.attributes.empty()) AppendRows(text, kAttributeColumns, RowsOf(drive), hasColors);
}

constexpr std::array kDriveColumns{Column{"Device", false},  Column{"Product", false},
                                   Column{"Capacity", true}, Column{"Serial number", false},
                                   Column{"Health", false},  Column{"Nearest to threshold", false},
                                   Column{"Value", true},    Column{"Threshold", true}};

constexpr const char* kNothing = "-";

// An empty cell would be hard to see among the others.
std::string Cell(std::string_view field) {
  const std::string_view trimmed = base::Trimmed(field, " ");
  return trimmed.empty() ? kNothing : base::OneLine(trimmed);
}

Row RowOf(const Drive& drive) {
  const Health health = HealthOf(drive);
  Row row{{PathText(drive.device), Cell(drive.product), Cell(drive.capacity), Cell(drive.serial),
           std::string(HealthWord(health))},
          health};
  const Attribute* nearest = FindNearestToThreshold(drive);
  if (nearest == nullptr) {
    row.cells.insert(row.cells.end(), 3, kNothing);
  } else {
    row.cells.insert(row.cells.end(), {Cell(nearest->name), std::to_string(nearest->value),
                                       std::to_string(nearest->threshold)});
  }
  return row;
}

}  // namespace

std::string TableText(const Report& report, bool hasColors) {
  std::string text;
  for (const Drive& drive : report.drives) AppendDrive(text, drive, hasColors);
  AppendEnd(text, report, hasColors);
  return text;
}

std::string BriefText(const Report& report, bool hasColors) {
  std::vector<Row> rows;
  for (const Drive& drive : report.drives) rows.push_back(RowOf(drive));
  std::string text;
  if (!rows.empty()) AppendRows(text, kDriveColumns, rows, hasColors);
  AppendEnd(text, report, hasColors);
  return text;
}

}  // namespace report
