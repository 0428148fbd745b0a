#include "report/columns.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "base/printable_text.h"

namespace report {
namespace {

constexpr std::string_view kGap = "  ";
constexpr std::size_t kLeastWidth = 8;
constexpr int kLastToGiveWay = 4;

using Widths = std::vector<std::size_t>;

// Of each health in turn: none, yellow for those to look after, red.
constexpr std::array<std::string_view, 6> kColors = {"",         "\x1b[33m", "\x1b[33m",
                                                     "\x1b[33m", "\x1b[33m", "\x1b[31m"};

// The escape sequences stand around `line`, so its width has to be settled before.
std::string Colored(std::string_view line, Health health, const Screen& screen) {
  const auto color = screen.hasColors ? kColors.at(static_cast<std::size_t>(health)) : "";
  std::string text(color);
  text += line;
  if (!color.empty()) text += "\x1b[0m";
  return text;
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

void MakeFit(Widths& widths, std::span<const Column> columns, std::size_t screenWidth) {
  const auto shown = widths.size() - static_cast<std::size_t>(std::ranges::count(widths, 0));
  const std::size_t gaps = (shown - 1) * kGap.size();
  for (int turn = 1; turn <= kLastToGiveWay; turn++) {
    for (std::size_t i = 0; i < widths.size(); i++) {
      const std::size_t all = std::accumulate(widths.begin(), widths.end(), gaps);
      if (columns[i].givesWay != turn || all <= screenWidth) continue;
      const std::size_t excess = all - screenWidth;
      const std::size_t least = std::min(widths[i], kLeastWidth);
      widths[i] = std::max(least, widths[i] - std::min(widths[i], excess));
    }
  }
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

// The length of the first line of `text`, of at most `width` characters if a blank allows it.
std::size_t LineLength(std::string_view text, std::size_t width) {
  std::size_t length = std::min(text.find(' '), text.size());
  while (length < text.size()) {
    const std::size_t next = std::min(text.find(' ', length + 1), text.size());
    if (base::Width(text.substr(0, next)) > width) break;
    length = next;
  }
  return length;
}

}  // namespace

void AppendParagraph(std::string& text, std::string_view indent, std::string_view paragraph,
                     Health health, const Screen& screen) {
  while (true) {
    const std::size_t taken = std::min(screen.columns, indent.size());
    const std::size_t length = LineLength(paragraph, screen.columns - taken);
    text.append(indent).append(Colored(paragraph.substr(0, length), health, screen)).append("\n");
    if (length == paragraph.size()) return;
    paragraph.remove_prefix(length + 1);
    indent = kGap;
  }
}

void AppendRows(std::string& text, std::span<const Column> columns, const std::vector<Row>& rows,
                const Screen& screen) {
  std::vector<std::string> headings;
  for (const Column& column : columns) headings.emplace_back(column.heading);
  Widths widths = WidthsOf(columns, rows);
  MakeFit(widths, columns, screen.columns);

  text.append(Padded(headings, columns, widths)).append("\n");
  for (const Row& row : rows) {
    text.append(Colored(Padded(row.cells, columns, widths), row.health, screen)).append("\n");
    if (!row.below.empty()) AppendParagraph(text, kGap, row.below, row.health, screen);
  }
}

}  // namespace report
