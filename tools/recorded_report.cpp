#include "tools/recorded_report.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
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

// A raw value that is too large for a count of sectors is something else.
std::optional<std::uint32_t> Sectors(const Block& data, std::uint8_t identifier) {
  const auto counts = machines::FindCounts(data, identifier);
  if (!counts || counts->raw > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
  return static_cast<std::uint32_t>(counts->raw);
}

// Some makers put other counts above it, but leave 16 bits between.
std::optional<std::uint32_t> ReallocatedSectors(const Block& data) {
  const auto counts = machines::FindCounts(data, 5);
  if (!counts || (counts->raw >> 16 & 0xFFFF) != 0) return std::nullopt;
  return static_cast<std::uint32_t>(counts->raw & 0xFFFF);
}

void AddData(report::Drive& drive, const Block& data) {
  for (report::Attribute& attribute : drive.attributes) {
    const auto counts = machines::FindCounts(data, attribute.id);
    if (counts) attribute.counts = {counts->worst, counts->raw};
  }
  drive.temperature = Temperature(data);
  drive.sectors = {ReallocatedSectors(data), Sectors(data, 197), Sectors(data, 198)};
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

// Where the report is damaged, the devices after the damage are in none of its lists.
void AddDevices(Report& report, const ReplayedReport& replayed) {
  auto drive = report.drives.begin();
  auto unread = report.notRead.begin();
  for (std::size_t i = 0; i < replayed.visits.size(); i++) {
    const auto& [device, begin] = replayed.visits[i];
    const bool isLast = i + 1 == replayed.visits.size();
    const std::size_t end = isLast ? replayed.text.size() : replayed.visits[i + 1].begin;
    const std::string_view lines = std::string_view(replayed.text).substr(begin, end - begin);
    const bool isRead = report::ParseReport(lines).notRead.empty();
    if (lines.empty()) {
      report.withoutSMART.push_back(machines::DiskName(*device));
    } else if (isRead && drive != report.drives.end()) {
      AddAnswers(*drive++, *device);
    } else if (!isRead && unread != report.notRead.end()) {
      AddNames(*unread++, *device);
    }
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
