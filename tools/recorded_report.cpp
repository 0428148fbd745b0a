#include "tools/recorded_report.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/printable_text.h"
#include "machines/disks/disk_entries.h"
#include "machines/disks/drive_blocks.h"
#include "report/report_reader.h"
#include "tools/replayed_report.h"

namespace tools {
namespace {

using platform::Block;
using platform::DriveAnswers;
using platform::Entry;
using report::Report;

std::optional<Block> BlockOf(const platform::BlockAnswer& answer) {
  if (!answer.succeeds) return std::nullopt;
  Block block{};
  std::ranges::copy(answer.bytes, block.begin());
  return block;
}

// Every maker puts the temperature of now into the lowest byte; what is above it differs.
std::optional<int> Temperature(const Block& data) {
  for (const int identifier : {194, 190}) {
    const auto counts = machines::FindCounts(data, static_cast<std::uint8_t>(identifier));
    if (!counts) continue;
    const int degrees = static_cast<int>(counts->raw & 0xFF);
    if (degrees >= 1 && degrees <= 100) return degrees;
  }
  return std::nullopt;
}

// Some makers put other counts above it, but leave 16 bits between.
std::optional<std::uint64_t> ReallocatedCount(std::uint64_t raw) {
  return (raw >> 16 & 0xFFFF) == 0 ? std::optional(raw & 0xFFFF) : std::nullopt;
}

// One that is too large for a count of sectors is something else.
std::optional<std::uint64_t> WholeCount(std::uint64_t raw) {
  return raw >> 32 == 0 ? std::optional(raw) : std::nullopt;
}

struct SectorAttribute {
  std::uint8_t identifier;
  std::string_view state;
  std::optional<std::uint64_t> (*count)(std::uint64_t raw);
};
constexpr std::array kSectorAttributes{SectorAttribute{5, "reallocated", ReallocatedCount},
                                       SectorAttribute{197, "pending", WholeCount},
                                       SectorAttribute{198, "uncorrectable", WholeCount}};

std::vector<report::SectorCount> LostSectors(const Block& data) {
  std::vector<report::SectorCount> sectors;
  for (const auto& [identifier, state, countOf] : kSectorAttributes) {
    const auto counts = machines::FindCounts(data, identifier);
    const auto count = counts ? countOf(counts->raw) : std::nullopt;
    if (count) sectors.push_back({state, static_cast<std::uint32_t>(*count)});
  }
  return sectors;
}

void AddData(report::Drive& drive, const Block& data) {
  for (report::Attribute& attribute : drive.attributes) {
    const auto counts = machines::FindCounts(data, attribute.id);
    if (counts) attribute.counts = {counts->worst, counts->raw};
  }
  drive.temperature = Temperature(data);
  drive.sectors = LostSectors(data);
}

void AddAnswers(report::Drive& drive, const Entry& device) {
  if (!device.drive) return;
  constexpr std::chrono::sys_days kDateOrigin = std::chrono::year(2001) / 1 / 1;
  const DriveAnswers answers = device.drive();
  if (const auto data = BlockOf(answers.data)) AddData(drive, *data);
  if (answers.date) drive.date = kDateOrigin + std::chrono::seconds(answers.date->seconds);
}

// As the report of the drive would name it; what its IDENTIFY DEVICE data do not tell, the kernel
// may.
void AddNames(report::UnreadDrive& drive, const Entry& device) {
  std::optional<Block> identify;
  if (device.drive) identify = BlockOf(device.drive().identify);
  drive.product = machines::Characteristic(device, machines::kProductNameKey);
  drive.serial = machines::Characteristic(device, machines::kSerialNumberKey);
  if (!identify) return;
  if (drive.product.empty()) drive.product = machines::ModelNumber(*identify);
  const std::string serial = machines::SerialNumber(*identify);
  if (!serial.empty()) drive.serial = serial;
}

// Where the report is damaged, the devices after the damage are in none of its lists. Whose lines
// are not exactly those of one device, since a text in them has line feeds, has no more than they
// say.
void AddDevices(Report& report, const ReplayedReport& replayed) {
  std::size_t drives = 0;
  std::size_t unread = 0;
  for (std::size_t i = 0; i < replayed.visits.size(); i++) {
    const auto& [device, begin] = replayed.visits[i];
    const bool isLast = i + 1 == replayed.visits.size();
    const std::size_t end = isLast ? replayed.text.size() : replayed.visits[i + 1].begin;
    const std::string_view lines = std::string_view(replayed.text).substr(begin, end - begin);
    if (lines.empty()) report.withoutSMART.push_back(machines::DiskName(*device));
    const Report own = report::ParseReport(lines);
    const bool isOne = own.drives.size() + own.notRead.size() == 1;
    if (isOne && drives < report.drives.size() && own.notRead.empty()) {
      AddAnswers(report.drives[drives], *device);
    } else if (isOne && unread < report.notRead.size() && own.drives.empty()) {
      AddNames(report.notRead[unread], *device);
    }
    drives += own.drives.size();
    unread += own.notRead.size();
  }
}

void AddOtherDisks(std::vector<std::string>& names, const std::vector<Entry>& entries) {
  for (const Entry& entry : entries) {
    if (entry.className == machines::kOtherDiskClass) names.push_back(machines::DiskName(entry));
    AddOtherDisks(names, entry.children);
  }
}

}  // namespace

Report RecordedReport(platform::Machine machine) {
  const ReplayedReport replayed = ReplayInMemory(std::move(machine));
  Report report = report::ParseReport(replayed.text);
  AddDevices(report, replayed);
  AddOtherDisks(report.notATA.emplace(), platform::ThisMachine().roots);
  return report;
}

}  // namespace tools
