// What the registry tells of a drive: lookups around an entry, product name, BSD
// name, capacity, and how the drive is attached.
#include <cstring>
#include <functional>

#include "platform/ledger.h"
#include "registry/device_description.h"
#include "registry/interconnect.h"
#include "registry/property_lookups.h"
#include "tests/support.h"

using platform::Data;
using platform::Dictionary;
using platform::Entry;
using platform::KeyedProperty;
using platform::Ledger;
using platform::Property;
using test::Bytes;
using test::Dict;
using test::Integer;
using test::Text;

namespace {

// Root > Bus > Drive > (Driver > Partition, Other), with properties for each.
struct Tree {
  Dictionary root = {}, bus = {}, drive = {}, driver = {}, partition = {}, other = {};
};

// The drive of that tree. When the probe is through, nothing but its service is open.
struct DriveIn {
  explicit DriveIn(const Tree& t) {
    Entry driver{"Driver", "", t.driver, {{"Partition", "", t.partition, {}, {}}}, {}};
    Entry drive{"Drive", "", t.drive, {driver, {"Other", "", t.other, {}, {}}}, {}};
    test::Install({{"Root", "", t.root, {{"Bus", "", t.bus, {drive}, {}}}, {}}});
    service = test::ServiceNamed("Drive");
  }
  ~DriveIn() {
    EXPECT_EQ(platform::OpenReferences(), (Ledger{{platform::ReferenceKind::kService, 1}}));
  }
  io_service_t service;
};

// What `write` writes into `size` bytes, which hold other text before.
std::string Written(std::size_t size, const std::function<void(char*)>& write) {
  const auto text = std::make_unique<char[]>(size);
  std::memset(text.get(), 'x', size - 1);
  write(text.get());
  return text.get();
}

std::string ProductName(const Property& name) {
  const DriveIn drive({.bus = {{"Device Characteristics", Dict({{"Product Name", name}})}}});
  const auto pascal = std::make_unique<unsigned char[]>(256);
  IOKitUtilsGetDeviceProductNamePStr(drive.service, pascal.get());
  std::string text =
      Written(256, [&](char* out) { IOKitUtilsGetDeviceProductNameCStr(drive.service, out); });
  EXPECT_EQ(std::string(pascal.get() + 1, pascal.get() + 1 + pascal[0]), text);
  return text;
}

std::string BSDName(const Tree& tree) {
  return Written(1024, [&](char* text) { IOKitUtilsGetBDSName(DriveIn(tree).service, text); });
}

// All of `around` stands beside the protocol characteristics and in them too.
std::string Interconnect(Property interconnect, Dictionary around, const Dictionary& below) {
  const auto info = std::make_unique<char[]>(777);  // the most that is written
  info[0] = 'x';
  Dictionary protocol = around;
  protocol.push_back({"Physical Interconnect", std::move(interconnect)});
  around.push_back({"Protocol Characteristics", Dict(std::move(protocol))});
  IOKitUtilsGetDeviceInterfaceInfo(DriveIn({.bus = around, .driver = below}).service, info.get());
  return {info.get() + 1, static_cast<unsigned char>(info[0])};
}

}  // namespace

TEST(Description, LookupsTakeTheNearestAncestorThenTheFirstDescendant) {
  const auto k = [](Property value) { return Dictionary{{"K", std::move(value)}}; };
  const Dictionary near = k(Text("near"));
  const Dictionary far = k(Text("far"));
  const struct {
    Tree tree;
    std::string text;
  } cases[] = {
      {{.bus = far, .drive = near, .driver = far}, "near"},
      {{.root = near, .driver = far}, "near"},
      {{.partition = near, .other = far}, "near"},
      {{.bus = k(Integer(7)), .driver = near}, ""},  // a wrong type upwards ends the search
      {{.bus = k(Text(std::string(255, 'a')))}, std::string(255, 'a')},
      {{.bus = k(Text(std::string(256, 'a')))}, ""},
  };
  for (const auto& [tree, text] : cases) {
    const DriveIn drive(tree);
    const auto lookUp = [&](char* out) { IOKitGetThisKeyCStr(drive.service, CFSTR("K"), out); };
    EXPECT_EQ(Written(256, lookUp), text);
  }
}

TEST(Description, ProductNameIsTrimmedAsciiOrNothing) {
  EXPECT_EQ(ProductName(Text("  EXAMPLE \t250 \t  ")), "EXAMPLE \t250 \t");
  EXPECT_EQ(ProductName(Text("    ")), "");
  EXPECT_EQ(ProductName(Text(std::string(255, 'n'))), std::string(255, 'n'));
  EXPECT_EQ(ProductName(Text(std::string(256, 'n'))), "");
}

TEST(Description, BSDNameIsTheEntrysOrADescendants) {
  const auto named = [](Property name) { return Dictionary{{"BSD Name", std::move(name)}}; };
  const Dictionary disk1 = named(Text("disk1"));
  const Dictionary disk2 = named(Text("disk2"));
  const std::string longest(1017, 'd');
  EXPECT_EQ(BSDName({.drive = disk1, .driver = disk2}), "/dev/rdisk1");
  EXPECT_EQ(BSDName({.bus = disk1, .partition = disk2, .other = disk1}), "/dev/rdisk2");
  EXPECT_EQ(BSDName({.bus = disk1}), "");
  EXPECT_EQ(BSDName({.drive = named(Integer(1)), .driver = disk2}), "");
  EXPECT_EQ(BSDName({.drive = named(Text(longest))}), "/dev/r" + longest);
  EXPECT_EQ(BSDName({.drive = named(Text(longest + "d"))}), "/dev/r");
}

TEST(Description, CapacityKeepsTheWidthOfItsNumber) {
  for (const auto& [size, expected] : {std::pair{250059350016, 250059350016}, {-1, 0xFFFFFFFF}}) {
    SInt64 capacity = -1;
    const DriveIn drive({.partition = {{"Size", Integer(size)}}});
    IOKitUtilsGetDeviceSizeInBytes(drive.service, &capacity);
    EXPECT_EQ(capacity, expected);
  }
}

TEST(Description, InterconnectTakesTheBranchOfItsFirstWord) {
  const Property ata = Text("ATA");
  const Property scsi = Text("SCSI");
  const std::string longATA = "ATA" + std::string(252, 'i');
  const KeyedProperty unit0 = {"unit number", Integer(0)};
  const KeyedProperty longUnit = {"unit number", {platform::Float64Number(1e247)}};
  const KeyedProperty bus2 = {"AAPL,bus-id", Bytes({2})};
  const KeyedProperty gen = {"device-type", Text("Gen")};
  const auto busId = [&](const Data& id) { return Dictionary{unit0, {"AAPL,bus-id", Bytes(id)}}; };
  const auto at = [&](const Data& b) {
    return Dictionary{unit0, {"io-device-location", Bytes(b)}};
  };
  const struct {
    Property interconnect;
    Dictionary around;
    std::string info;
    Dictionary below = {};
  } cases[] = {
      {Text(std::string(250, 'x') + "ATA ATA"), {}, ""},
      {Text("Fibre Channel Interface"), {}, "Fibre Channel Interface"},
      // SCSI
      {scsi, {{"SCSI Target Identifier", Integer(2)}}, "SCSI:  ID = 2"},
      {Text("ATA on SCSI"), {}, "ATA on SCSI:  ID = 3", {{"SCSI Target", Integer(3)}}},
      {scsi, {{"SCSI Target Identifier", Text("2")}}, "", {{"SCSI Target", Integer(3)}}},
      {scsi, {{"SCSI Target Identifier", {platform::Number{15, 2}}}}, "SCSI:  ID = "},
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
      {ata, {{"unit number", {platform::Float64Number(1e248)}}, bus2}, "ATA Bus 2: Dev "},
      // The others
      {Text("FireWire"),
       {{"GUID", Integer(0x11223344556677)}},
       "FireWire:  GUID = 7766554433221100"},
      {Text("USB"), {{"locationID", Integer(16)}}, "USB:  locationID = 16"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Interconnect(c.interconnect, c.around, c.below), c.info) << &c - cases;
  }
}
