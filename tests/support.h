// Machines, drives and blocks made in a few lines, and a run of the probe on them.
#pragma once

#include <IOKit/IOKitLib.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/machine.h"

namespace test {

inline platform::Property Text(std::string text) { return {std::move(text)}; }
inline platform::Property Integer(std::int64_t n) { return {platform::IntegerNumber(n)}; }
inline platform::Property Bytes(platform::Data bytes) { return {std::move(bytes)}; }
inline platform::Property Dict(platform::Dictionary values) { return {std::move(values)}; }

// A drive that answers what its fields hold; an empty field is a failed call.
struct FakeDrive : platform::Drive {
  bool opens = true;
  bool enables = true;
  std::optional<bool> status = false;
  std::optional<Block> data = Block{};
  std::optional<Block> thresholds = Block{};
  std::optional<Block> identify = Block{};
  std::string calls;  // a letter each: O E S D T I

  bool Open() override { return Called('O', opens); }
  bool Enable(bool enable) override { return Called('E', enable && enables); }
  std::optional<bool> ReturnStatus() override { return Called('S', status); }
  std::optional<Block> ReadData() override { return Called('D', data); }
  std::optional<Block> ReadThresholds() override { return Called('T', thresholds); }
  std::optional<Block> Identify() override { return Called('I', identify); }

  virtual bool Fails(char /*call*/) { return false; }

 private:
  template <typename T>
  T Called(char letter, T answer) {
    calls += letter;
    return Fails(letter) ? T{} : answer;
  }
};

// Entries of a block as the drive delivers them: identifier, flags and value, or
// identifier and threshold.
struct BlockEntry {
  std::uint8_t id, second, value = 0;
};
platform::Drive::Block BlockOf(std::initializer_list<BlockEntry> entries);

// Gives the drive one healthy attribute, serial "SERIAL" and revision "REV".
std::shared_ptr<FakeDrive> HealthyDrive(
    std::shared_ptr<FakeDrive> drive = std::make_shared<FakeDrive>());

// A device with its features, a product name, and below it a medium `bsdName` of
// `size` bytes (no size: 0).
platform::Entry AtaDevice(std::shared_ptr<platform::Drive> drive, std::string bsdName = "disk0",
                          std::int64_t size = 0);
platform::Entry AhciDevice(std::shared_ptr<platform::Drive> drive, std::string bsdName = "disk0",
                           std::int64_t size = 0);

// What the report says of such a device with a healthy drive.
struct DeviceLines {
  std::string path, product = "EXAMPLE 250", revision = "REV     ", capacity = {};
  std::string serial = "SERIAL              ";
  std::string attributes =
      "SMARTStatus:::194:::Temperature:::8704:::38:::Always Passing:::Life-Span:OK\n";
  bool exceeded = false;

  std::string Text() const;
};

// Starts a new process on a machine of these entries: nothing is open any more.
void Install(std::vector<platform::Entry> roots, SInt32 systemVersion = 0x1068);

// Runs the whole probe on the installed machine and gives what it printed.
std::string Report();

// A service handle for the first entry of that name, owned by the caller.
io_service_t ServiceNamed(const char* name);

}  // namespace test
