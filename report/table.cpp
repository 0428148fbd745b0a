// The report as a table for people: a heading a drive, its attributes in columns, and
// at the end the drives that could not be read.
#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "report/figures.h"
#include "report/form.h"
#include "report/health.h"
#include "report/text.h"

namespace report {
namespace {

constexpr std::size_t kColumns = 6;
constexpr std::string_view kGap = "  ";

using Cells = std::array<std::string, kColumns>;
using Widths = std::array<std::size_t, kColumns>;

constexpr std::array<bool, kColumns> kIsRightAligned{true, false, true, true, false, false};

struct Row {
  Cells cells;
  Health health = Health::kGood;
};

std::string_view Word(Health health) {
  switch (health) {
    case Health::kGood:
      return "OK";
    case Health::kWorn:
      return "worn";
    case Health::kFailing:
      break;
  }
  return "failing";
}

std::string_view Color(Health health) {
  switch (health) {
    case Health::kGood:
      return {};
    case Health::kWorn:
      return "\x1b[33m";
    case Health::kFailing:
      break;
  }
  return "\x1b[31m";
}

std::string_view Status(const Attribute& attribute) {
  if (!attribute.reached) return "OK";
  return attribute.preFailure ? "failing" : "reached";
}

Row RowOf(const Attribute& attribute) {
  return {{std::to_string(attribute.id), attribute.name, ValueText(attribute.value),
           ThresholdText(attribute.threshold), attribute.preFailure ? "pre-failure" : "life-span",
           std::string(Status(attribute))},
          HealthOf(attribute)};
}

std::vector<Row> RowsOf(const Drive& drive) {
  std::vector<Row> rows{{{"ID", "Name", "Value", "Threshold", "Kind", "Status"}, Health::kGood}};
  for (const Attribute& attribute : drive.attributes) rows.push_back(RowOf(attribute));
  return rows;
}

Widths WidthsOf(const std::vector<Row>& rows) {
  Widths widths{};
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < kColumns; ++i) {
      widths[i] = std::max(widths[i], Width(row.cells[i]));
    }
  }
  return widths;
}

// The last column ends its line and is not padded.
std::string Padded(const Cells& cells, const Widths& widths) {
  std::string line;
  for (std::size_t i = 0; i < kColumns; ++i) {
    const std::string padding(widths[i] - Width(cells[i]), ' ');
    line += kGap;
    if (kIsRightAligned[i]) line += padding;
    line += cells[i];
    if (!kIsRightAligned[i] && i + 1 < kColumns) line += padding;
  }
  return line;
}

std::string_view Named(const std::string& device) {
  return device.empty() ? std::string_view("(no path)") : std::string_view(device);
}

void AppendField(std::string& heading, std::string_view label, std::string_view field) {
  const std::string_view trimmed = Trim(field);
  if (!trimmed.empty()) heading.append(", ").append(label).append(trimmed);
}

std::string Heading(const Drive& drive) {
  std::string heading(Named(drive.device));
  AppendField(heading, "", drive.product);
  AppendField(heading, "revision ", drive.revision);
  AppendField(heading, "", drive.capacity);
  AppendField(heading, "serial ", drive.serial);
  return heading + ": ";
}

class Table : public Form {
 public:
  Table(std::string& text, bool hasColors) : text_(text), hasColors_(hasColors) {}

  void OnDrive(const Drive& drive) override {
    StartBlock();
    text_ += Heading(drive);
    const Health health = HealthOf(drive);
    AppendLine(Word(health), health);
    if (!drive.attributes.empty()) AppendRows(RowsOf(drive));
  }

  void OnFailed(const std::string& device) override { failed_.emplace_back(Named(device)); }

  void Finish() override {
    if (failed_.empty()) return;
    StartBlock();
    text_ += "Could not be read:\n";
    for (const std::string& device : failed_) {
      text_ += kGap;
      AppendLine(device, Health::kFailing);
    }
  }

 private:
  // An empty line between blocks.
  void StartBlock() {
    if (std::exchange(hasBlocks_, true)) text_ += '\n';
  }

  void AppendRows(const std::vector<Row>& rows) {
    const Widths widths = WidthsOf(rows);
    for (const Row& row : rows) AppendLine(Padded(row.cells, widths), row.health);
  }

  void AppendLine(std::string_view line, Health health) {
    const bool isColored = hasColors_ && health != Health::kGood;
    if (isColored) text_ += Color(health);
    text_ += line;
    if (isColored) text_ += "\x1b[0m";
    text_ += '\n';
  }

  std::string& text_;
  bool hasColors_;
  bool hasBlocks_ = false;
  std::vector<std::string> failed_;
};

}  // namespace

std::unique_ptr<Form> MakeTable(std::string& text, bool hasColors) {
  return std::make_unique<Table>(text, hasColors);
}

}  // namespace report
