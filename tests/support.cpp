#include "tests/support.h"

#include <IOKit/IOKitLib.h>

#include <deque>
#include <ostream>
#include <utility>

#include "probe/drive_table.h"
#include "probe/start_up.h"

namespace test {
namespace {

std::deque<platform::Machine>& Machines() {
  static std::deque<platform::Machine> machines(1);
  return machines;
}

void PutField(platform::Drive::Block& block, std::size_t offset, std::size_t size,
              std::string text) {
  text.resize(size, ' ');
  for (std::size_t i = 0; i < size; i++) block[offset + (i ^ 1)] = static_cast<UInt8>(text[i]);
}

platform::Entry Device(const char* name, std::shared_ptr<platform::Drive> drive,
                       std::string bsdName, std::int64_t size) {
  platform::Entry medium{"Media", "IOMedia", {{"BSD Name", Text(std::move(bsdName))}}, {}, nullptr};
  if (size != 0) medium.properties.push_back({"Size", Integer(size)});
  return {name,
          name,
          {{"Device Characteristics",
            Dict({{"ATA Features", Integer(0x20)}, {"Product Name", Text("  EXAMPLE 250 ")}})}},
          {std::move(medium)},
          std::move(drive)};
}

}  // namespace

platform::Property Text(std::string text) { return {std::move(text)}; }
platform::Property Integer(std::int64_t value) { return {platform::IntegerNumber(value)}; }
platform::Property Real(double value) { return {platform::Float64Number(value)}; }
platform::Property Bytes(platform::Data bytes) { return {std::move(bytes)}; }
platform::Property Dict(platform::Dictionary values) { return {std::move(values)}; }

platform::Drive::Block DataBlock(std::initializer_list<Attribute> attributes) {
  platform::Drive::Block block{0x10, 0x00};
  std::size_t at = 2;
  for (const Attribute& attribute : attributes) {
    block[at] = attribute.id;
    block[at + 1] = attribute.flags;
    block[at + 3] = attribute.value;
    at += 12;
  }
  return block;
}

platform::Drive::Block ThresholdBlock(std::initializer_list<Threshold> thresholds) {
  platform::Drive::Block block{0x10, 0x00};
  std::size_t at = 2;
  for (const Threshold& threshold : thresholds) {
    block[at] = threshold.id;
    block[at + 1] = threshold.threshold;
    at += 12;
  }
  return block;
}

platform::Drive::Block IdentifyBlock(std::string serial, std::string revision) {
  platform::Drive::Block block{};
  block.fill('x');  // what lies behind a field must never be printed
  PutField(block, 20, 20, std::move(serial));
  PutField(block, 46, 8, std::move(revision));
  return block;
}

std::shared_ptr<FakeDrive> HealthyDrive() {
  auto drive = std::make_shared<FakeDrive>();
  drive->data = DataBlock({{194, 0x22, 38}});
  drive->thresholds = ThresholdBlock({{194, 0}});
  drive->identify = IdentifyBlock("SERIAL", "REV");
  return drive;
}

platform::Entry AtaDevice(std::shared_ptr<platform::Drive> drive, std::string bsdName,
                          std::int64_t size) {
  return Device("IOATABlockStorageDevice", std::move(drive), std::move(bsdName), size);
}

platform::Entry AhciDevice(std::shared_ptr<platform::Drive> drive, std::string bsdName,
                           std::int64_t size) {
  return Device("IOAHCIBlockStorageDevice", std::move(drive), std::move(bsdName), size);
}

platform::Machine& Install(std::vector<platform::Entry> roots, SInt32 systemVersion) {
  return Machines().emplace_back(platform::Machine{systemVersion, std::move(roots), {}});
}

std::string Report() {
  gMySysVersion = 0;
  bLittleEndianCPU = false;
  gSavedATADriveInfoArray = nullptr;
  gSMARTDriveCount = 0;
  testing::internal::CaptureStdout();
  RunProbe();
  return testing::internal::GetCapturedStdout();
}

unsigned int ServiceNamed(const char* name) {
  io_iterator_t iterator = 0;
  IOServiceGetMatchingServices(kIOMasterPortDefault, IOServiceNameMatching(name), &iterator);
  const io_service_t service = IOIteratorNext(iterator);
  IOObjectRelease(iterator);
  return service;
}

}  // namespace test

platform::Machine& platform::ThisMachine() { return test::Machines().back(); }

void platform::PrintTo(const Ledger& ledger, std::ostream* out) {
  *out << ledger.matchingDictionaries << " matching, " << ledger.propertyDictionaries
       << " properties, " << ledger.iterators << " iterators, " << ledger.services << " services, "
       << ledger.plugIns << " plug-ins, " << ledger.smartInterfaces << " interfaces, "
       << ledger.foundValues << " values, " << ledger.strings << " strings, " << ledger.memoryBlocks
       << " blocks";
}
