#include "drives/scsi_logs.h"

#include <scsi/sg_lib.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "base/numbers.h"
#include "base/printable_text.h"

namespace drives {
namespace {

using base::Count128;
using Bytes = std::span<const std::uint8_t>;

Count128 Number(Bytes bytes) {
  Count128 number;
  for (const std::uint8_t byte : bytes) {
    number = {number.high << 8 | number.low >> 56, number.low << 8 | byte};
  }
  return number;
}

// Calls `use` with the code and the value of each whole parameter.
template <typename Use>
void ForEachParameter(Bytes page, Use use) {
  constexpr std::size_t kHeaderSize = 4;
  if (page.size() < kHeaderSize) return;
  const auto length = static_cast<std::size_t>(page[2] << 8 | page[3]);
  page = page.subspan(kHeaderSize);
  page = page.first(std::min(length, page.size()));
  while (page.size() >= kHeaderSize) {
    const int code = page[0] << 8 | page[1];
    const std::size_t size = page[3];
    page = page.subspan(kHeaderSize);
    if (page.size() < size) return;
    use(code, page.first(size));
    page = page.subspan(size);
  }
}

// A figure that is there already stays. Returns whether it was new.
bool AddFigure(RecordedFacts& facts, Figure figure) {
  if (FindFigure(facts, figure.key, figure.group)) return false;
  facts.figures.push_back(std::move(figure));
  return true;
}

RecordedFacts& FactsOf(Drive& drive) {
  return drive.recorded ? *drive.recorded : drive.recorded.emplace();
}

// How a figure is named, by the code of its parameter.
struct Row {
  int code;
  std::string_view key, name;
  Unit unit = Unit::kNone;
};

constexpr std::string_view kErrorSection = "scsi_error_counter_log";
constexpr std::string_view kUncorrected = "total_uncorrected_errors";

struct ErrorKind {
  std::uint8_t page;
  std::string_view group, name;
  std::string_view loss;  // what its errors that were not corrected are called
};
constexpr std::uint8_t kReadPage = 0x03;
constexpr std::uint8_t kWritePage = 0x02;
constexpr std::array kErrorKinds = {ErrorKind{kReadPage, "read", "Read", "uncorrected read"},
                                    ErrorKind{kWritePage, "write", "Write", "uncorrected write"},
                                    ErrorKind{0x05, "verify", "Verify", "uncorrected verify"}};

// The names come after that of the kind.
constexpr std::array kErrorRows = {
    Row{0, "errors_corrected_by_eccfast", "errors, corrected at once"},
    Row{1, "errors_corrected_by_eccdelayed", "errors, corrected with delay"},
    Row{2, "errors_corrected_by_rereads_rewrites", "errors, corrected by another try"},
    Row{3, "total_errors_corrected", "errors, corrected"},
    Row{4, "correction_algorithm_invocations", "errors, runs of the correction"},
    Row{5, "gigabytes_processed", "volume", Unit::kBytes},
    Row{6, kUncorrected, "errors, not corrected"}};

void AddErrors(RecordedFacts& facts, const ErrorKind& kind, Bytes page) {
  ForEachParameter(page, [&](int code, Bytes value) {
    const auto* const row = std::ranges::find(kErrorRows, code, &Row::code);
    if (row == kErrorRows.end() || value.empty() || value.size() > sizeof(Count128)) return;
    const Count128 count = Number(value);
    const std::string name = std::string(kind.name).append(" ").append(row->name);
    if (!AddFigure(facts, {kErrorSection, kind.group, row->key, name, count, row->unit})) return;
    if (row->unit == Unit::kBytes && kind.page == kReadPage) facts.bytesRead = ToDouble(count);
    if (row->unit == Unit::kBytes && kind.page == kWritePage) facts.bytesWritten = ToDouble(count);
    if (row->key != kUncorrected) return;
    facts.losses.push_back({.name = kind.loss,
                            .ofSectors = false,
                            .count = Saturated(count),
                            .key = kUncorrected,
                            .group = kind.group});
  });
}

void AddTemperature(RecordedFacts& facts, int code, Bytes value) {
  constexpr std::uint8_t kNotKnown = 0xFF;
  if (value.size() < 2 || value[1] == kNotKnown) return;
  if (code == 0) facts.temperature = value[1];
  if (code == 1 && value[1] != 0) facts.temperatureLimit = value[1];
}

// Years and weeks are digits, counts are numbers, of which the largest means "not known".
void AddCycles(RecordedFacts& facts, int code, Bytes value) {
  constexpr std::string_view kSection = "scsi_start_stop_cycle_counter";
  constexpr int kDateOfManufacture = 1;
  constexpr std::array kRows = {
      Row{3, "specified_cycle_count_over_device_lifetime", "Start-stop cycles in a lifetime"},
      Row{4, "accumulated_start_stop_cycles", "Start-stop cycles"},
      Row{5, "specified_load_unload_count_over_device_lifetime",
          "Load-unload cycles in a lifetime"},
      Row{6, "accumulated_load_unload_cycles", "Load-unload cycles"}};
  const auto add = [&](const Row& row, std::uint64_t count) {
    AddFigure(facts, {kSection, "", row.key, std::string(row.name), {0, count}, row.unit});
  };
  if (code == kDateOfManufacture && value.size() >= 6) {
    const std::string digits(value.begin(), value.begin() + 6);
    const auto year = base::ParseNumber<std::uint16_t>(digits.substr(0, 4), 10);
    const auto week = base::ParseNumber<std::uint16_t>(digits.substr(4), 10);
    if (year && week) add({1, "year_of_manufacture", "Year of manufacture"}, *year);
    if (year && week) add({1, "week_of_manufacture", "Week of manufacture"}, *week);
  }
  const auto* const row = std::ranges::find(kRows, code, &Row::code);
  if (row == kRows.end() || value.size() < 4) return;
  const std::uint64_t count = Number(value.first(4)).low;
  if (count == std::numeric_limits<std::uint32_t>::max()) return;
  add(*row, count);
  if (code == 4) facts.powerCycles = static_cast<std::uint32_t>(count);
}

void AddWear(RecordedFacts& facts, int code, Bytes value) {
  constexpr std::string_view kKey = "scsi_percentage_used_endurance_indicator";
  if (code != 1 || value.size() < 4) return;
  facts.percentageUsed = value[3];
  facts.percentageUsedKey = kKey;
  AddFigure(facts, {"", "", kKey, "Percentage used", {0, value[3]}, Unit::kPercent});
}

void AddPowerOnTime(RecordedFacts& facts, int code, Bytes value) {
  if (code != 0 || value.size() < 4) return;
  facts.powerOnHours = static_cast<std::uint32_t>(Number(value.first(4)).low / 60);
}

// The words of the standard, for one line and without what the library puts before them.
std::string WordsOf(std::uint8_t code, std::uint8_t qualifier) {
  constexpr std::string_view kBefore = "Additional sense: ";
  std::array<char, 256> words{};
  sg_get_asc_ascq_str(code, qualifier, static_cast<int>(words.size()), words.data());
  std::string_view text = words.data();
  if (text.starts_with(kBefore)) text.remove_prefix(kBefore.size());
  return base::PrintableASCII(text);
}

void AddException(Drive& drive, std::uint8_t code, std::uint8_t qualifier) {
  const bool isNone = code == 0 && qualifier == 0;
  drive.thresholdExceeded = code == kFailurePrediction;
  FactsOf(drive).exception = {code, qualifier, isNone ? "" : WordsOf(code, qualifier)};
}

// The page has a temperature too, for disks without a page of it.
void AddExceptionPage(Drive& drive, int code, Bytes value) {
  if (code != 0 || value.size() < 2) return;
  AddException(drive, value[0], value[1]);
  RecordedFacts& facts = FactsOf(drive);
  facts.hasExceptionPage = true;
  const bool isKnown = value.size() > 2 && value[2] != 0 && value[2] != 0xFF;
  if (isKnown && !facts.temperature) facts.temperature = value[2];
}

}  // namespace

void AddLogPage(Drive& drive, Bytes page) {
  if (page.empty()) return;
  RecordedFacts& facts = FactsOf(drive);
  const int number = page[0] & 0x3F;
  const auto* const errors = std::ranges::find(kErrorKinds, number, &ErrorKind::page);
  if (errors != kErrorKinds.end()) AddErrors(facts, *errors, page);
  ForEachParameter(page, [&](int code, Bytes value) {
    if (number == 0x0D) AddTemperature(facts, code, value);
    if (number == 0x0E) AddCycles(facts, code, value);
    if (number == 0x11) AddWear(facts, code, value);
    if (number == 0x15) AddPowerOnTime(facts, code, value);
    if (number == 0x2F) AddExceptionPage(drive, code, value);
  });
}

void AddSense(Drive& drive, Bytes sense) {
  sg_scsi_sense_hdr header{};
  if (FactsOf(drive).hasExceptionPage) return;
  if (!sg_scsi_normalize_sense(sense.data(), static_cast<int>(sense.size()), &header)) return;
  const bool isException = TellsException(sense);
  AddException(drive, isException ? header.asc : 0, isException ? header.ascq : 0);
}

bool TellsException(Bytes sense) {
  sg_scsi_sense_hdr header{};
  if (!sg_scsi_normalize_sense(sense.data(), static_cast<int>(sense.size()), &header)) return false;
  return header.asc == kFailurePrediction || header.asc == kWarning;
}

void AddDefectList(Drive& drive, Bytes header) {
  constexpr std::string_view kKey = "scsi_grown_defect_list";
  constexpr int kShortBlock = 0;  // of the formats the only one with 4 bytes a defect
  if (header.size() < 4) return;
  const std::size_t size = (header[1] & 0x07) == kShortBlock ? 4 : 8;
  const std::uint64_t count = static_cast<std::size_t>(header[2] << 8 | header[3]) / size;
  RecordedFacts& facts = FactsOf(drive);
  if (!AddFigure(facts, {"", "", kKey, "Grown defects", {0, count}})) return;
  facts.losses.push_back({.name = kReallocated, .count = count, .key = kKey});
}

}  // namespace drives
