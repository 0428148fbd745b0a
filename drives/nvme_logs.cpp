#include "drives/nvme_logs.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>

namespace drives {
namespace {

using base::Count128;
using Bytes = std::span<const std::uint8_t>;

constexpr std::uint32_t kDataUnit = 512'000;  // in bytes
constexpr int kKelvin = 273;                  // at 0 °C, in whole degrees as drives count them

Count128 Number(Bytes bytes) {
  Count128 number;
  for (std::size_t i = bytes.size(); i-- > 0;) {
    number = {number.high << 8 | number.low >> 56, number.low << 8 | bytes[i]};
  }
  return number;
}

// nullopt for 0 K, which stands for no answer.
std::optional<int> Celsius(Bytes bytes) {
  const auto kelvin = static_cast<int>(Number(bytes).low);
  return kelvin == 0 ? std::nullopt : std::optional(kelvin - kKelvin);
}

struct Field {
  std::size_t offset, size;
  std::string_view key, name;
  Unit unit = Unit::kNone;
};

constexpr std::array kHealthFields = {
    Field{0, 1, "critical_warning", "Critical warning"},
    Field{1, 2, "temperature", "Temperature", Unit::kCelsius},
    Field{3, 1, "available_spare", "Available spare", Unit::kPercent},
    Field{4, 1, "available_spare_threshold", "Available spare threshold", Unit::kPercent},
    Field{5, 1, "percentage_used", "Percentage used", Unit::kPercent},
    Field{32, 16, "data_units_read", "Data units read", Unit::kDataUnits},
    Field{48, 16, "data_units_written", "Data units written", Unit::kDataUnits},
    Field{64, 16, "host_reads", "Host read commands"},
    Field{80, 16, "host_writes", "Host write commands"},
    Field{96, 16, "controller_busy_time", "Controller busy time", Unit::kMinutes},
    Field{112, 16, "power_cycles", "Power cycles"},
    Field{128, 16, "power_on_hours", "Power-on time", Unit::kHours},
    Field{144, 16, "unsafe_shutdowns", "Unsafe shutdowns"},
    Field{160, 16, "media_errors", "Media and data integrity errors"},
    Field{176, 16, "num_err_log_entries", "Error log entries"},
    Field{192, 4, "warning_temp_time", "Time above warning temperature", Unit::kMinutes},
    Field{196, 4, "critical_comp_time", "Time above critical temperature", Unit::kMinutes}};

constexpr std::size_t kFirstSensor = 200;
constexpr std::size_t kSensors = 8;

constexpr std::string_view kHealthSection = "nvme_smart_health_information_log";

void AddFigures(RecordedFacts& facts, Bytes log) {
  for (const auto& [offset, size, key, name, unit] : kHealthFields) {
    const Bytes bytes = log.subspan(offset, size);
    Count128 value = Number(bytes);
    if (unit == Unit::kCelsius) {
      const auto degrees = Celsius(bytes);
      if (!degrees) continue;
      value = base::Signed(*degrees);
    }
    const std::uint32_t unitSize = unit == Unit::kDataUnits ? kDataUnit : 0;
    facts.figures.push_back({kHealthSection, "", key, std::string(name), value, unit, unitSize});
  }
  for (std::size_t i = 0; i < kSensors; i++) {
    const auto degrees = Celsius(log.subspan(kFirstSensor + 2 * i, 2));
    if (!degrees) continue;
    facts.figures.push_back({kHealthSection, "temperature_sensors", "",
                             "Temperature sensor " + std::to_string(i + 1), base::Signed(*degrees),
                             Unit::kCelsius});
  }
}

std::optional<std::uint32_t> SmallCount(const RecordedFacts& facts, std::string_view key) {
  const std::uint64_t count = Saturated(FindFigure(facts, key)->value);
  if (count > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
  return static_cast<std::uint32_t>(count);
}

}  // namespace

bool AddHealthLog(Drive& drive, Bytes log) {
  if (log.size() < base::kBlockSize) return false;
  RecordedFacts& facts = drive.recorded ? *drive.recorded : drive.recorded.emplace();
  AddFigures(facts, log);
  facts.criticalWarning = log[0];
  drive.thresholdExceeded = (log[0] & ~kTemperatureWarning) != 0;
  facts.temperature = Celsius(log.subspan(1, 2));
  facts.temperatureKey = "temperature";
  facts.percentageUsed = log[5];
  facts.percentageUsedKey = "percentage_used";
  facts.powerOnHours = SmallCount(facts, "power_on_hours");
  facts.powerCycles = SmallCount(facts, "power_cycles");
  facts.rotationRate = 0;
  facts.bytesRead = BytesOf(facts, "data_units_read");
  facts.bytesWritten = BytesOf(facts, "data_units_written");
  constexpr std::string_view kMediaErrors = "media_errors";
  facts.losses = {{.name = "media",
                   .ofSectors = false,
                   .count = Saturated(FindFigure(facts, kMediaErrors)->value),
                   .key = kMediaErrors}};
  return true;
}

void AddController(Drive& drive, Bytes controller) {
  constexpr std::array kLimits = {
      Field{266, 2, "warning", "Warning temperature", Unit::kCelsius},
      Field{268, 2, "critical", "Critical temperature", Unit::kCelsius}};
  RecordedFacts& facts = drive.recorded ? *drive.recorded : drive.recorded.emplace();
  for (const auto& [offset, size, key, name, unit] : kLimits) {
    if (controller.size() < offset + size) return;
    const auto degrees = Celsius(controller.subspan(offset, size));
    if (!degrees) continue;
    facts.figures.push_back({"nvme_composite_temperature_threshold", "", key, std::string(name),
                             base::Signed(*degrees), unit});
    if (!facts.temperatureLimit) facts.temperatureLimit = degrees;
  }
}

bool HasNVMeSelfTests(Bytes controller) {
  constexpr std::size_t kOptionalCommands = 256;
  constexpr std::uint8_t kSelfTest = 0x10;
  return controller.size() > kOptionalCommands && (controller[kOptionalCommands] & kSelfTest) != 0;
}

void MaskController(base::Block& controller) {
  const std::span all(controller);
  const auto isCharacter = [](std::uint8_t byte) { return byte != ' ' && byte != 0; };
  std::ranges::replace_if(all.subspan(4, 20), isCharacter, 'X');
  std::ranges::fill(all.subspan(112, 16), std::uint8_t{0});
}

}  // namespace drives
