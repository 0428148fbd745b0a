// What the forms for people share: rows in aligned columns, their colours, and the devices
// that could not be read.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "report/health.h"
#include "report/report.h"

namespace report {

struct Column {
  std::string_view heading;
  bool isRightAligned;
};

struct Row {
  std::vector<std::string> cells;  // exactly one a column, each UTF-8 for one line
  Health health;
};

// `line` in the colour of the health, if it has one: good health has none. The escape sequences
// stand around it, so its width has to be settled before.
std::string Colored(std::string_view line, Health health, bool hasColors);

// Appends the headings and the rows. A cell too wide for any column moves the rest of its row
// and widens no other's, so that one long text does not make every row as long.
void AppendRows(std::string& text, std::span<const Column> columns, const std::vector<Row>& rows,
                bool hasColors);

// Appends the devices that could not be read, after an empty line where `text` has rows. For
// a whole report of nothing it says that there are no drives: no output would look like success.
void AppendEnd(std::string& text, const Report& report, bool hasColors);

}  // namespace report
