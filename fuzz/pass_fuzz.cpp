// Any two S.M.A.R.T. blocks, any IDENTIFY data and any properties through a whole
// pass. The report must keep its form, and nothing may be left open that is not
// left open by intent.
#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/ledger.h"
#include "platform/machine.h"
#include "platform/process_end.h"
#include "probe/drive_table.h"
#include "probe/start_up.h"

using platform::Drive;
using platform::Entry;
using platform::Ledger;
using platform::Property;

namespace {

// The keys that the probe looks for, and one that it does not.
constexpr std::array kKeys = {"Device Characteristics",
                              "ATA Features",
                              "Product Name",
                              "Physical Interconnect",
                              "SCSI Target",
                              "Protocol Characteristics",
                              "unit number",
                              "AAPL,bus-id",
                              "SCSI Target Identifier",
                              "Channel",
                              "device-type",
                              "Physical Interconnect Location",
                              "socket type",
                              "io-device-location",
                              "GUID",
                              "locationID",
                              "BSD Name",
                              "Size",
                              "Serial Number",
                              "Revision",
                              "Vendor"};
constexpr int kDeepest = 2;

platform::Machine& Fuzzed() {
  static platform::Machine machine;
  return machine;
}

struct FuzzedDrive : Drive {
  bool opens = true;
  bool enables = true;
  std::optional<bool> status;
  std::optional<Block> data, thresholds, identify;

  bool Open() override { return opens; }
  bool Enable(bool /*enable*/) override { return enables; }
  std::optional<bool> ReturnStatus() override { return status; }
  std::optional<Block> ReadData() override { return data; }
  std::optional<Block> ReadThresholds() override { return thresholds; }
  std::optional<Block> Identify() override { return identify; }
};

std::string TakeText(FuzzedDataProvider& input) {
  constexpr const char* kWords[] = {"ATA", "SCSI", "FireWire", "USB", "Channel", "Gen", "Maxtor"};
  if (input.ConsumeBool()) return input.PickValueInArray(kWords);
  return input.ConsumeRandomLengthString(300);
}

platform::Dictionary TakeProperties(FuzzedDataProvider& input, int depth);

Property TakeProperty(FuzzedDataProvider& input, int depth) {
  switch (input.ConsumeIntegralInRange(0, depth < kDeepest ? 6 : 5)) {
    case 0:
      return {TakeText(input)};
    case 1:
      return {platform::Number{input.ConsumeIntegralInRange<CFNumberType>(-1, 16),
                               input.ConsumeIntegral<std::uint64_t>()}};
    case 2:
      return {input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 300))};
    case 3:
      return {input.ConsumeBool()};
    case 4:
      return {platform::Array{}};
    case 5:
      return {platform::IntegerNumber(input.ConsumeIntegral<std::int64_t>())};
    default:
      return {TakeProperties(input, depth + 1)};
  }
}

platform::Dictionary TakeProperties(FuzzedDataProvider& input, int depth) {
  platform::Dictionary properties;
  for (const char* key : kKeys) {
    if (input.ConsumeBool()) properties.push_back({key, TakeProperty(input, depth)});
  }
  return properties;
}

std::optional<Drive::Block> TakeBlock(FuzzedDataProvider& input) {
  if (!input.ConsumeBool()) return std::nullopt;
  Drive::Block block{};
  input.ConsumeData(block.data(), block.size());
  return block;
}

Entry TakeDevice(FuzzedDataProvider& input) {
  auto drive = std::make_shared<FuzzedDrive>();
  drive->opens = input.ConsumeIntegralInRange(0, 9) != 0;
  drive->enables = input.ConsumeIntegralInRange(0, 9) != 0;
  if (input.ConsumeBool()) drive->status = input.ConsumeBool();
  drive->data = TakeBlock(input);
  drive->thresholds = TakeBlock(input);
  drive->identify = TakeBlock(input);
  const char* name = input.ConsumeBool() ? "IOAHCIBlockStorageDevice" : "IOATABlockStorageDevice";
  Entry device{name, name, TakeProperties(input, 0), {}, std::move(drive)};
  device.children.push_back({"Media", "IOMedia", TakeProperties(input, 1), {}, nullptr});
  return device;
}

platform::Machine TakeMachine(FuzzedDataProvider& input) {
  platform::Machine machine;
  machine.systemVersion = input.PickValueInArray<SInt32>({0x101F, 0x1020, 0x1058, 0x1068});
  Entry controller{"Controller", "IOPCIDevice", TakeProperties(input, 1), {}, nullptr};
  const int devices = input.ConsumeIntegralInRange(1, 3);
  for (int i = 0; i < devices; i++) controller.children.push_back(TakeDevice(input));
  machine.roots.push_back(std::move(controller));
  return machine;
}

std::string Report() {
  char* text = nullptr;
  std::size_t size = 0;
  FILE* const old = std::exchange(stdout, open_memstream(&text, &size));
  RunProbe();
  std::fclose(std::exchange(stdout, old));
  std::string report(text, size);
  std::free(text);
  return report;
}

int Count(std::string_view report, std::string_view tag) {
  int count = 0;
  for (std::size_t at = 0; (at = report.find(tag, at)) != std::string_view::npos; at += tag.size())
    count++;
  return count;
}

// A text of the registry may hold anything, line feeds and tags too: each counted
// drive gives at least a start and an end, and no line lacks its end.
void CheckReport(std::string_view report) {
  if (!report.empty() && report.back() != '\n') std::abort();
  if (Count(report, "SmartDeviceStart:::") < gSMARTDriveCount) std::abort();
  if (Count(report, "SmartDeviceEnd:::") < gSMARTDriveCount) std::abort();
}

void CheckLedger(const Ledger& ledger) {
  const Ledger expected = {.propertyDictionaries = ledger.propertyDictionaries,
                           .iterators = ledger.iterators,
                           .services = ledger.services,
                           .plugIns = ledger.smartInterfaces,
                           .smartInterfaces = ledger.smartInterfaces,
                           .memoryBlocks = ledger.memoryBlocks};
  if (ledger != expected || ledger.memoryBlocks > 1 || ledger.iterators > 2) std::abort();
}

}  // namespace

platform::Machine& platform::ThisMachine() { return Fuzzed(); }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  Fuzzed() = TakeMachine(input);
  gMySysVersion = 0;
  gSMARTDriveCount = 0;
  CheckReport(Report());
  CheckLedger(platform::OpenReferences());
  platform::EndProcess();
  return 0;
}
