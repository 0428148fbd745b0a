// Any two S.M.A.R.T. blocks, any IDENTIFY data and any properties through a whole
// pass. Nothing may be left open that is not left open by intent.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

#include "platform/ledger.h"
#include "platform/machine.h"
#include "platform/process_end.h"
#include "probe/start_up.h"

using platform::Drive;
using platform::Entry;

namespace {

// The keys that the probe looks for, and one that it does not.
constexpr const char* kKeys[] = {"Physical Interconnect Location",
                                 "Device Characteristics",
                                 "AAPL,bus-id",
                                 "Protocol Characteristics",
                                 "Physical Interconnect",
                                 "ATA Features",
                                 "SCSI Target Identifier",
                                 "io-device-location",
                                 "SCSI Target",
                                 "Serial Number",
                                 "Product Name",
                                 "unit number",
                                 "device-type",
                                 "socket type",
                                 "Channel",
                                 "locationID",
                                 "BSD Name",
                                 "Revision",
                                 "Vendor",
                                 "GUID",
                                 "Size"};

platform::Machine& Fuzzed() {
  static platform::Machine machine;
  return machine;
}

// Takes its blocks at once, and draws which calls fail when it is asked.
struct FuzzedDrive : Drive {
  explicit FuzzedDrive(FuzzedDataProvider& i) : input(i) {
    for (Block& block : blocks) input.ConsumeData(block.data(), block.size());
  }

  bool Open() override { return input.ConsumeIntegralInRange(0, 9) != 0; }
  bool Enable(bool /*enable*/) override { return Open(); }
  std::optional<bool> ReturnStatus() override { return Drawn(input.ConsumeBool()); }
  std::optional<Block> ReadData() override { return Drawn(blocks[0]); }
  std::optional<Block> ReadThresholds() override { return Drawn(blocks[1]); }
  std::optional<Block> Identify() override { return Drawn(blocks[2]); }

  template <typename T>
  std::optional<T> Drawn(T answer) {
    return Open() ? std::optional(answer) : std::nullopt;
  }

  FuzzedDataProvider& input;
  Block blocks[3] = {};
};

platform::Dictionary TakeProperties(FuzzedDataProvider& input, int depth);

platform::Property TakeProperty(FuzzedDataProvider& input, int depth) {
  constexpr const char* kWords[] = {"ATA", "SCSI", "FireWire", "USB", "Channel", "Gen", "Maxtor"};
  switch (input.ConsumeIntegralInRange(0, depth < 2 ? 5 : 4)) {
    case 0:
      return {input.PickValueInArray(kWords)};
    case 1:
      return {input.ConsumeRandomLengthString(300)};
    case 2:
      return {platform::Number{input.ConsumeIntegralInRange<CFNumberType>(-1, 16),
                               input.ConsumeIntegral<std::uint64_t>()}};
    case 3:
      return {input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 300))};
    case 4:
      return {true};
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

platform::Machine TakeMachine(FuzzedDataProvider& input) {
  Entry controller{"Controller", "IOPCIDevice", {}, {}, nullptr};
  const int devices = input.ConsumeIntegralInRange(1, 3);
  for (int i = 0; i < devices; i++) {
    auto drive = std::make_shared<FuzzedDrive>(input);
    const char* name = input.ConsumeBool() ? "IOAHCIBlockStorageDevice" : "IOATABlockStorageDevice";
    const Entry medium{"Media", "IOMedia", TakeProperties(input, 1), {}, nullptr};
    controller.children.push_back({name, name, TakeProperties(input, 0), {medium}, drive});
  }
  controller.properties = TakeProperties(input, 1);
  return {input.PickValueInArray<SInt32>({0x101F, 0x1020, 0x1058, 0x1068}), {controller}, {}};
}

bool IsExpected(const platform::Ledger& left) {
  return left.matchingDictionaries == 0 && left.foundValues == 0 && left.strings == 0 &&
         left.plugIns == left.smartInterfaces && left.memoryBlocks <= 1 && left.iterators <= 2;
}

}  // namespace

platform::Machine& platform::ThisMachine() { return Fuzzed(); }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  [[maybe_unused]] static FILE* const nowhere = std::freopen("/dev/null", "w", stdout);
  FuzzedDataProvider input(data, size);
  Fuzzed() = TakeMachine(input);
  gMySysVersion = 0;
  RunProbe();
  if (!IsExpected(platform::OpenReferences())) std::abort();
  platform::EndProcess();
  return 0;
}
