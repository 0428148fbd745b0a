// What the registry tells of a drive: lookups around an entry, product name, BSD name and how
// the drive is attached.
#include <bit>
#include <cfloat>
#include <functional>

#include "probe/registry/device_description.h"
#include "probe/registry/interconnect.h"
#include "probe/registry/property_lookups.h"
#include "tests/support.h"

namespace test {

// Root > Bus > Drive > (Driver > Partition, Other), with properties for each.
struct Tree {
  Dictionary root = {}, bus = {}, drive = {}, driver = {}, partition = {}, other = {};
};

// What `write` writes of the drive of that tree into `size` bytes, which hold other text
// before. Nothing but the drive's service is open then.
std::vector<char> Written(const Tree& t, std::size_t size,
                          const std::function<void(io_service_t, char*)>& write) {
  Entry driver{"Driver", "", t.driver, {{"Partition", "", t.partition, {}, {}}}, {}};
  Entry drive{"Drive", "", t.drive, {driver, {"Other", "", t.other, {}, {}}}, {}};
  Install({{"Root", "", t.root, {{"Bus", "", t.bus, {drive}, {}}}, {}}});
  std::vector<char> text(size, 'x');
  write(ServiceNamed("Drive"), text.data());
  EXPECT_EQ(OpenReferences(), (Ledger{{kService, 1}}));
  return text;
}

std::string PascalText(const std::vector<char>& text) {
  return {text.data() + 1, static_cast<unsigned char>(text[0])};
}

TEST(Description, TextsAreTheEntrysOrAnAncestorsOrADescendantsAndThePathNoAncestors) {
  const auto both = [](const Property& value) {
    return Dictionary{{"K", value}, {"BSD Name", value}};
  };
  const auto a = [&](std::size_t length) { return both(Text(std::string(length, 'a'))); };
  const Dictionary near = both(Text("near"));
  const Dictionary far = both(Text("far"));
  const Dictionary number = both(Integer(7));
  const std::tuple<Tree, std::string, std::string> cases[] = {
      {{.bus = far, .drive = near, .driver = far}, "near", "/dev/rnear"},
      {{.root = near, .driver = far}, "near", "/dev/rfar"},
      {{.bus = near}, "near", ""},
      {{.partition = near, .other = far}, "near", "/dev/rnear"},
      // A wrong type ends the search
      {{.bus = number, .driver = near}, "", "/dev/rnear"},
      {{.drive = number, .driver = near}, "", ""},
      {{.drive = a(255)}, std::string(255, 'a'), "/dev/r" + std::string(255, 'a')},
      {{.drive = a(256)}, "", "/dev/r" + std::string(256, 'a')},
      {{.drive = a(1017)}, "", "/dev/r" + std::string(1017, 'a')},
      {{.drive = a(1018)}, "", "/dev/r"},
  };
  const auto lookUp = [](io_service_t drive, char* out) {
    IOKitGetThisKeyCStr(drive, CFSTR("K"), out);
  };
  for (const auto& [tree, text, path] : cases) {
    EXPECT_EQ(Written(tree, 256, lookUp).data(), text);
    EXPECT_EQ(Written(tree, 1024, IOKitUtilsGetBDSName).data(), path);
  }
}

TEST(Description, ProductNameIsTrimmedAsciiOrNothing) {
  const std::string longest(255, 'n');
  const std::pair<std::string, std::string> kNames[] = {
      {"  EXAMPLE \t250 \t  ", "EXAMPLE \t250 \t"},
      {"    ", ""},
      {longest, longest},
      {longest + "n", ""}};
  const auto look = [](io_service_t drive, char* out) {
    IOKitUtilsGetDeviceProductNamePStr(drive, reinterpret_cast<unsigned char*>(out));
  };
  for (const auto& [name, trimmed] : kNames) {
    const Tree tree = {.bus = {{"Device Characteristics", Dict({{"Product Name", Text(name)}})}}};
    EXPECT_EQ(PascalText(Written(tree, 256, look)), trimmed);
  }
}

TEST(Description, CapacityKeepsTheWidthOfItsNumber) {
  SInt64 capacity = -1;
  Written({.partition = {{"Size", Integer(-1)}}}, 0,
          [&](io_service_t drive, char*) { IOKitUtilsGetDeviceSizeInBytes(drive, &capacity); });
  const bool isLittleEndian = std::endian::native == std::endian::little;
  EXPECT_EQ(capacity, isLittleEndian ? 0xFFFFFFFFLL : -1LL << 32);
}

TEST(Description, InterconnectTakesTheBranchOfItsFirstWord) {
  const Property ata = Text("ATA");
  const Property scsi = Text("SCSI");
  const std::string longATA = "ATA" + std::string(252, 'i');
  const Dictionary::value_type unit0 = {"unit number", Integer(0)};
  const Dictionary::value_type longUnit = {"unit number", {platform::Float64Number(1e247)}};
  const Dictionary::value_type bus2 = {"AAPL,bus-id", Bytes({2})};
  const Dictionary::value_type gen = {"device-type", Text("Gen")};
  const auto busId = [&](const Data& b) { return Dictionary{unit0, {"AAPL,bus-id", {b}}}; };
  const auto at = [&](const Data& b) { return Dictionary{unit0, {"io-device-location", {b}}}; };
  const struct {
    Property interconnect;
    Dictionary around;
    std::string info;
    Dictionary below = {};
  } cases[] = {
      {Text(std::string(250, 'x') + "ATA ATA"), {}, ""},
      {Text("Fibre Channel Interface"), {}, "Fibre Channel Interface"},
      // SCSI
      {scsi, {{"SCSI Target Identifier", Integer(16)}}, "SCSI:  ID = 16"},
      {Text("ATA on SCSI"), {}, "ATA on SCSI:  ID = 3", {{"SCSI Target", Integer(3)}}},
      {scsi, {{"SCSI Target Identifier", Text("2")}}, "", {{"SCSI Target", Integer(3)}}},
      {scsi, {{"SCSI Target Identifier", {platform::Number{15, 2}}}}, "SCSI:  ID = "},
      {scsi, {}, ""},
      // ATA without a unit number
      {Text("SATA"), {{"Physical Interconnect Location", Text("Internal")}}, "SATA Internal"},
      {ata, {{"Physical Interconnect Location", Integer(1)}, {"unit number", Text("0")}}, "ATA"},
      // ATA with a bus
      {ata, busId({0, 0, 1, 0x0A}), "ATA Bus 10A: Dev 0"},
      {ata, busId({}), "ATA Bus 0: Dev 0"},
      {ata, busId(Data(127, 0x11)), "ATA Bus " + std::string(247, '1')},
      {ata, busId(Data(128, 0x00)), "ATA Bus ???: Dev 0"},
      {ata, at({'C', 'h', 'a', 'n', 'n', 'e', 'l', ' ', '1', 0}), "Serial ATA Channel 1"},
      {ata, at({'B', 'a', 'y', 0xC3, 0xA9}), "ATA Bus Bay\xC3\xA9: Dev 0"},
      {ata, at({'B', 0xFF}), "ATA Bus 0: Dev 0"},
      {ata, at({}), "ATA Bus 0: Dev 0"},
      {ata, {unit0, {"io-device-location", Text("Channel")}}, "ATA Bus ???: Dev 0"},
      {ata, {{"io-device-location", Bytes({'C'})}, bus2}, "ATA Bus 2: Dev 0", {unit0}},
      {ata, {unit0}, "ATA", {bus2}},
      // ATA without a bus
      {ata, {unit0, gen}, "Channel: 1", {{"Channel", Integer(1)}}},
      {ata, {unit0, {"device-type", Text("Generic2")}}, "device-type: Generic2"},
      {ata, {unit0, gen, {"socket type", Text("Bay")}}, "Bay"},
      {ata, {unit0, {"device-type", Text("caf\xC3\xA9")}}, "ATA"},
      // The longest texts, cut to what a string holds, and one that is too long
      {Text(longATA), {longUnit, {"io-device-location", Bytes(Data(255, 'b'))}}, longATA},
      {ata, {{"unit number", {platform::Float64Number(-DBL_MAX)}}, bus2}, "ATA Bus 2: Dev "},
      // The others
      {Text("FireWire"), {{"GUID", Integer(2LL << 32)}}, "FireWire:  GUID = 0000000002000000"},
      {Text("USB"), {{"locationID", Integer(16)}}, "USB:  locationID = 16"},
      {Text("FireWire"), {}, ""},
      {Text("USB"), {}, ""},
  };
  // All of `around` stands beside the protocol characteristics and in them too.
  for (auto [interconnect, around, info, below] : cases) {
    Dictionary protocol = around;
    protocol.emplace("Physical Interconnect", interconnect);
    around.emplace("Protocol Characteristics", Dict(protocol));
    const Tree tree = {.bus = around, .driver = below};
    // 777: the most that is written
    EXPECT_EQ(PascalText(Written(tree, 777, IOKitUtilsGetDeviceInterfaceInfo)), info);
  }
}

}  // namespace test
