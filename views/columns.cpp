#include "views/columns.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

#include "base/printable_text.h"

namespace views {
namespace {

constexpr std::string_view kGap = "  ";
constexpr int kLastToGiveWay = 5;

using health::Color;
using Widths = std::vector<std::size_t>;

constexpr std::string_view Escape(Color color) {
  if (color == Color::kGood) return "";
  return color == Color::kWarning ? "\x1b[33m" : "\x1b[31m";  // yellow, red
}

// The escape sequences stand around `line`, so its width has to be settled before.
std::string Colored(std::string_view line, Color color, const Screen& screen) {
  const std::string_view begin = screen.hasColors ? Escape(color) : "";
  return fmt::format("{}{}{}", begin, line, begin.empty() ? "" : "\x1b[0m");
}

// What each column takes, 0 where no row has anything for it.
Widths WidthsOf(std::span<const Column> columns, const std::vector<Row>& rows) {
  Widths widths(columns.size());
  for (std::size_t i = 0; i < widths.size(); ++i) {
    for (const Row& row : rows) widths[i] = std::max(widths[i], base::Width(row.cells[i]));
    if (widths[i] > 0) widths[i] = std::max(widths[i], base::Width(columns[i].heading));
  }
  return widths;
}

// Of a whole line, with the gaps between those columns that are there.
std::size_t LineWidth(const Widths& widths) {
  const auto shown = widths.size() - static_cast<std::size_t>(std::ranges::count(widths, 0U));
  return std::accumulate(widths.begin(), widths.end(), (shown - 1) * kGap.size());
}

bool CanBeLeftOut(const Column& column) { return column.givesWay > 0 && column.least == 0; }
bool CanBeNarrower(const Column& column) { return column.givesWay > 0 && column.least > 0; }

// Calls `change` with the place of each column that gives way, in their order.
template <typename Change>
void ForEachInTurn(std::span<const Column> columns, Change change) {
  for (int turn = 1; turn <= kLastToGiveWay; turn++) {
    for (std::size_t i = 0; i < columns.size(); i++) {
      if (columns[i].givesWay == turn) change(i);
    }
  }
}

// Leaves out what has no room even if all others are as narrow as they may be, and then makes these
// as narrow as they have to be.
void MakeFit(Widths& widths, std::span<const Column> columns, std::size_t screenWidth) {
  Widths least = widths;
  for (std::size_t i = 0; i < columns.size(); i++) {
    if (CanBeNarrower(columns[i])) least[i] = std::min(widths[i], columns[i].least);
  }
  ForEachInTurn(columns, [&](std::size_t i) {
    if (CanBeLeftOut(columns[i]) && LineWidth(least) > screenWidth) least[i] = widths[i] = 0;
  });
  ForEachInTurn(columns, [&](std::size_t i) {
    const std::size_t all = LineWidth(widths);
    if (!CanBeNarrower(columns[i]) || all <= screenWidth) return;
    widths[i] = std::max(least[i], widths[i] - std::min(widths[i], all - screenWidth));
  });
}

// The last column ends its line and is not padded. One without a width is left out.
std::string Padded(const std::vector<std::string>& cells, std::span<const Column> columns,
                   const Widths& widths) {
  std::string line;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (widths[i] == 0) continue;
    const std::string cell = base::Shortened(cells[i].empty() ? "-" : cells[i], widths[i]);
    const std::string padding(widths[i] - base::Width(cell), ' ');
    if (!line.empty()) line += kGap;
    if (columns[i].isRightAligned) line += padding;
    line += cell;
    if (!columns[i].isRightAligned && i + 1 < columns.size()) line += padding;
  }
  return line;
}

// The start of `text` that is the first line, of at most `width` characters: up to the last blank
// that allows it, or else within a word.
std::string_view FirstLine(std::string_view text, std::size_t width) {
  const std::string_view most = base::FirstCharacters(text, width);
  if (most.size() == text.size()) return text;
  const std::size_t blank = text.substr(0, most.size() + 1).rfind(' ');
  return blank == std::string_view::npos || blank == 0 ? most : text.substr(0, blank);
}

}  // namespace

void AppendParagraph(std::string& text, std::string_view indent, std::string_view paragraph,
                     Color color, const Screen& screen) {
  do {
    const std::size_t width = std::max(screen.columns, indent.size() + 1) - indent.size();
    const std::string_view line = FirstLine(paragraph, width);
    text.append(indent).append(Colored(line, color, screen)).append("\n");
    paragraph.remove_prefix(line.size());
    if (paragraph.starts_with(' ')) paragraph.remove_prefix(1);
    indent = kGap;
  } while (!paragraph.empty());
}

void AppendRows(std::string& text, std::span<const Column> columns, const std::vector<Row>& rows,
                const Screen& screen) {
  std::vector<std::string> headings;
  for (const Column& column : columns) headings.emplace_back(column.heading);
  Widths widths = WidthsOf(columns, rows);
  MakeFit(widths, columns, screen.columns);

  text.append(Padded(headings, columns, widths)).append("\n");
  for (const Row& row : rows) {
    text.append(Colored(Padded(row.cells, columns, widths), row.color, screen)).append("\n");
    if (!row.below.empty()) AppendParagraph(text, kGap, row.below, row.color, screen);
  }
}

}  // namespace views
