#include "report/columns.h"

#include <algorithm>
#include <cstddef>

#include "report/text.h"

namespace report {
namespace {

constexpr std::string_view kGap = "  ";
constexpr std::size_t kMaxWidth = 40;

using Widths = std::vector<std::size_t>;

std::string_view Color(Health health) {
  switch (health) {
    case Health::kGood:
      return {};
    case Health::kNoAttributes:
    case Health::kWorn:
      return "\x1b[33m";
    case Health::kFailing:
      break;
  }
  return "\x1b[31m";
}

Row Headings(std::span<const Column> columns) {
  Row row{{}, Health::kGood};
  for (const Column& column : columns) row.cells.emplace_back(column.heading);
  return row;
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

}  // namespace

std::string Colored(std::string_view line, Health health, bool hasColors) {
  const std::string_view color = hasColors ? Color(health) : std::string_view();
  std::string text(color);
  text += line;
  if (!color.empty()) text += "\x1b[0m";
  return text;
}

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

}  // namespace report
