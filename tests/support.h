// Machines, drives and blocks made in a few lines, and a run of the probe on them.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ledger.h"
#include "platform/machine.h"

namespace test {

platform::Property Text(std::string text);
platform::Property Integer(std::int64_t value);
platform::Property Real(double value);
platform::Property Bytes(platform::Data bytes);
platform::Property Dict(platform::Dictionary values);

// A drive that answers what its fields hold; an empty field is a failed call.
struct FakeDrive : platform::Drive {
  bool opens = true;
  bool enables = true;
  std::optional<bool> status = false;
  std::optional<Block> data = Block{};
  std::optional<Block> thresholds = Block{};
  std::optional<Block> identify = Block{};
  std::string calls;  // a letter each: O E S D T I C

  bool Open() override { return Called('O', opens); }
  bool Enable(bool enable) override { return Called('E', enable && enables); }
  std::optional<bool> ReturnStatus() override { return Called('S', status); }
  std::optional<Block> ReadData() override { return Called('D', data); }
  std::optional<Block> ReadThresholds() override { return Called('T', thresholds); }
  std::optional<Block> Identify() override { return Called('I', identify); }
  void Close() override { calls += 'C'; }

 private:
  template <typename T>
  T Called(char letter, T answer) {
    calls += letter;
    return answer;
  }
};

struct Attribute {
  std::uint8_t id;
  std::uint8_t flags;  // the first byte as the drive delivers it
  std::uint8_t value;
};
struct Threshold {
  std::uint8_t id;
  std::uint8_t threshold;
};

platform::Drive::Block DataBlock(std::initializer_list<Attribute> attributes);
platform::Drive::Block ThresholdBlock(std::initializer_list<Threshold> thresholds);
// IDENTIFY data with the two texts as a drive delivers them, characters exchanged.
platform::Drive::Block IdentifyBlock(std::string serial, std::string revision);

// A drive with one healthy attribute, serial "SERIAL" and revision "REV".
std::shared_ptr<FakeDrive> HealthyDrive();

// A device with its features, a product name, and below it a medium `bsdName` of
// `size` bytes (no size: 0).
platform::Entry AtaDevice(std::shared_ptr<platform::Drive> drive, std::string bsdName = "disk0",
                          std::int64_t size = 0);
platform::Entry AhciDevice(std::shared_ptr<platform::Drive> drive, std::string bsdName = "disk0",
                           std::int64_t size = 0);

// Makes the machine that the platform answers from. It stays alive to the end.
platform::Machine& Install(std::vector<platform::Entry> roots, SInt32 systemVersion = 0x1068);

// Runs the whole probe on the installed machine and gives what it printed.
std::string Report();

// A service handle for the first entry of that name, owned by the caller.
unsigned int ServiceNamed(const char* name);

}  // namespace test

namespace platform {
void PrintTo(const Ledger& ledger, std::ostream* out);
}
