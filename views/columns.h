// Text on a terminal: cells in aligned columns, lines no longer than it is wide, and the colours of
// grades. What the cells say is not known here.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "health/grades.h"
#include "views/views.h"

namespace views {

struct Column {
  std::string_view heading;
  bool isRightAligned = false;
  // Where the columns do not fit, the one of 1 is made narrower first, then that of 2, and so on;
  // never those of 0.
  int givesWay = 0;
  // How narrow it may become. 0: it is left out.
  std::size_t least = 0;
};

// All texts are UTF-8 for one line.
struct Row {
  std::vector<std::string> cells;  // exactly one a column
  health::Color color;
  std::string below = {};  // on lines of its own, if it is not empty
};

// Appends the headings and the rows. A column in which every cell is empty is left out; any other
// empty cell becomes a dash. A cell that does not fit its column is shortened.
void AppendRows(std::string& text, std::span<const Column> columns, const std::vector<Row>& rows,
                const Screen& screen);

// Appends `paragraph`, which is UTF-8 for one line, as lines of that colour. Lines are broken at
// blanks where possible. The first begins with `indent`, the others with two blanks.
void AppendParagraph(std::string& text, std::string_view indent, std::string_view paragraph,
                     health::Color color, const Screen& screen);

}  // namespace views
