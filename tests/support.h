// Machines, drives, blocks and long texts made in a few lines, and a run of the probe.
#pragma once

#include <IOKit/IOKitLib.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/ledger.h"
#include "platform/machine.h"

namespace test {

namespace fs = std::filesystem;
using platform::Data;
using platform::Dictionary;
using platform::Drive;
using platform::DriveAnswers;
using platform::Entry;
using platform::Ledger;
using platform::OpenReferences;
using platform::Property;
using enum platform::ReferenceKind;

std::string Repeated(std::size_t times, const std::string& text);

// `text` with `replacement` for each match of an extended regular expression; "&" in it is what the
// first pair of parentheses matches.
std::string Replaced(const std::string& text, const char* regex, const std::string& replacement);

// What `write` leaves in exactly `size` bytes, which held "untouched".
std::vector<char> Written(std::size_t size, const std::function<void(char*)>& write);

// So many seconds after 2001 begins, where recorded dates begin.
inline std::chrono::sys_seconds Date(std::int64_t seconds) {
  return std::chrono::sys_days(std::chrono::year(2001) / 1 / 1) + std::chrono::seconds(seconds);
}
inline Property Text(std::string text) { return {std::move(text)}; }
inline Property Integer(std::int64_t n) { return {platform::IntegerNumber(n)}; }
inline Property Bytes(Data bytes) { return {std::move(bytes)}; }
inline Property Dict(Dictionary values) { return {std::move(values)}; }

// What `run` prints on that stream.
std::string Printed(std::FILE* stream, const std::function<void()>& run);

// One for each process, as long as it lives; what was in it is gone.
fs::path EmptyFolder();
// Makes the folders too; no content, no file.
void WriteFile(const fs::path& file, const std::string& content);

// Entries of a block as the drive delivers them: identifier, flags and values, or
// identifier and threshold.
struct BlockEntry {
  std::uint8_t id, second, value = 0, worst = 0;
  std::uint64_t raw = 0;
};
Data BlockOf(const std::vector<BlockEntry>& entries);

// One healthy attribute, serial "SERIAL", revision "REV" and model "MODEL".
DriveAnswers HealthyAnswers();
inline DriveAnswers NotOpened(std::string why) { return {.whyNotOpened = std::move(why)}; }
inline Drive DriveOf(DriveAnswers answers) {
  return [answers = std::move(answers)] { return answers; };
}
inline Drive HealthyDrive() { return DriveOf(HealthyAnswers()); }

// A device with its features, a product name, and below it a medium `bsdName` of
// `size` bytes (no size: 0).
Entry AtaDevice(Drive drive, std::string bsdName = "disk0", SInt64 size = 0);
Entry AhciDevice(Drive drive, std::string bsdName = "disk0", SInt64 size = 0);

// What the report says of such a device with a healthy drive.
struct DeviceLines {
  std::string path = "/dev/rdisk0", product = "EXAMPLE 250", revision = "REV     ", capacity = {};
  std::string serial = "SERIAL              ";
  std::string attributes =
      "SMARTStatus:::194:::Temperature:::8704:::38:::Always Passing:::Life-Span:OK\n";
  bool exceeded = false;

  std::string Text() const;
};

// Starts a new process on a machine of these entries: nothing is open any more.
void Install(std::vector<Entry> roots, SInt32 systemVersion = 0x1068);

// Runs the whole probe on such a machine and gives what it printed.
std::string Report(std::vector<Entry> roots, SInt32 systemVersion = 0x1068);
inline std::string ReportOf(const platform::Machine& machine) {
  return Report(machine.roots, machine.systemVersion);
}

// A service handle for the first entry of that name, owned by the caller; 0: there is none.
io_service_t ServiceNamed(const char* name);

}  // namespace test
