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
using platform::OpenReferences;
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

// A service for the drive of that tree. The handle is left open, as the probe's are.
io_service_t DriveIn(const Tree& t) {
  Entry driver{"Driver", "", t.driver, {{"Partition", "", t.partition, {}, {}}}, {}};
  Entry drive{"Drive", "", t.drive, {driver, {"Other", "", t.other, {}, {}}}, {}};
  test::Install({{"Root", "", t.root, {{"Bus", "", t.bus, {drive}, {}}}, {}}});
  return test::ServiceNamed("Drive");
}

// What `write` writes into `size` bytes, which hold other text before.
std::string Written(std::size_t size, const std::function<void(char*)>& write) {
  const auto text = std::make_unique<char[]>(size);
  std::memset(text.get(), 'x', size - 1);
  write(text.get());
  return text.get();
}

std::string LookedUpText(const Tree& tree) {
  return Written(256, [&](char* text) { IOKitGetThisKeyCStr(DriveIn(tree), CFSTR("K"), text); });
}

std::string ProductName(const Property& name) {
  const io_service_t drive =
      DriveIn({.bus = {{"Device Characteristics", Dict({{"Product Name", name}})}}});
  const auto pascal = std::make_unique<unsigned char[]>(256);
  IOKitUtilsGetDeviceProductNamePStr(drive, pascal.get());
  std::string text =
      Written(256, [=](char* out) { IOKitUtilsGetDeviceProductNameCStr(drive, out); });
  EXPECT_EQ(std::string(pascal.get() + 1, pascal.get() + 1 + pascal[0]), text);
  return text;
}

std::string BSDName(const Tree& tree) {
  return Written(1024, [&](char* text) { IOKitUtilsGetBDSName(DriveIn(tree), text); });
}

SInt64 Capacity(const Tree& tree) {
  SInt64 capacity = -1;
  IOKitUtilsGetDeviceSizeInBytes(DriveIn(tree), &capacity);
  return capacity;
}

// All of `around` stands beside the protocol characteristics and in them too.
std::string Interconnect(Property interconnect, Dictionary around, const Dictionary& below) {
  const auto info = std::make_unique<char[]>(777);  // the most that is written
  Dictionary protocol = around;
  protocol.push_back({"Physical Interconnect", std::move(interconnect)});
  around.push_back({"Protocol Characteristics", Dict(std::move(protocol))});
  IOKitUtilsGetDeviceInterfaceInfo(DriveIn({.bus = around, .driver = below}), info.get());
  return {info.get() + 1, static_cast<unsigned char>(info[0])};
}

class Description : public testing::Test {
 protected:
  // Services stay open; nothing else may.
  void TearDown() override {
    Ledger left = OpenReferences() - before_;
    left.services = 0;
    EXPECT_EQ(left, Ledger{});
  }

 private:
  Ledger before_ = OpenReferences();
};

}  // namespace

TEST_F(Description, LookupsTakeTheNearestAncestorThenTheFirstDescendant) {
  const auto k = [](Property value) { return Dictionary{{"K", std::move(value)}}; };
  const Dictionary near = k(Text("near"));
  const Dictionary far = k(Text("far"));
  const struct {
    Tree tree;
    std::string text;
  } cases[] = {
      {{.bus = far, .drive = near, .driver = far}, "near"},
      {{.root = far, .bus = near}, "near"},
      {{.root = near, .driver = far}, "near"},
      {{.driver = near, .partition = far, .other = far}, "near"},
      {{.partition = near, .other = far}, "near"},
      {{}, ""},
      {{.bus = k(Integer(7)), .driver = near}, ""},  // a wrong type upwards ends the search
      {{.bus = k(Text(std::string(255, 'a')))}, std::string(255, 'a')},
      {{.bus = k(Text(std::string(256, 'a')))}, ""},
      {{.bus = k(Text("abc\xC3\xA9"))}, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(LookedUpText(c.tree), c.text) << &c - cases;
}

TEST_F(Description, ProductNameIsTrimmedAsciiOrNothing) {
  EXPECT_EQ(ProductName(Text("  EXAMPLE \t250 \t  ")), "EXAMPLE \t250 \t");
  EXPECT_EQ(ProductName(Text("    ")), "");
  EXPECT_EQ(ProductName(Text(std::string(255, 'n'))), std::string(255, 'n'));
  EXPECT_EQ(ProductName(Text(std::string(256, 'n'))), "");
  EXPECT_EQ(ProductName(Text("EXAMPLE\xC2\xA0")), "");
  EXPECT_EQ(ProductName(Integer(250)), "");
}

TEST_F(Description, BSDNameIsTheEntrysOrADescendants) {
  const auto named = [](Property name) { return Dictionary{{"BSD Name", std::move(name)}}; };
  const Dictionary disk1 = named(Text("disk1"));
  const Dictionary disk2 = named(Text("disk2"));
  const std::string longest(1017, 'd');
  EXPECT_EQ(BSDName({.drive = disk1, .driver = disk2}), "/dev/rdisk1");
  EXPECT_EQ(BSDName({.bus = disk1, .partition = disk2, .other = disk1}), "/dev/rdisk2");
  EXPECT_EQ(BSDName({.bus = disk1}), "");
  EXPECT_EQ(BSDName({.drive = named(Integer(1)), .driver = disk2}), "");
  EXPECT_EQ(BSDName({.drive = named(Text("disk\xC3\xA9"))}), "/dev/r");
  EXPECT_EQ(BSDName({.drive = named(Text(longest))}), "/dev/r" + longest);
  EXPECT_EQ(BSDName({.drive = named(Text(longest + "d"))}), "/dev/r");
}

TEST_F(Description, CapacityKeepsTheWidthOfItsNumber) {
  const auto sized = [](platform::Number number) { return Dictionary{{"Size", {number}}}; };
  EXPECT_EQ(Capacity({.partition = {{"Size", Integer(250059350016)}}}), 250059350016);
  EXPECT_EQ(Capacity({.driver = sized(platform::IntegerNumber(-1))}), 0xFFFFFFFFLL);
  EXPECT_EQ(Capacity({.driver = sized({kCFNumberSInt16Type, 0x1234})}), 0x1234);
  EXPECT_EQ(Capacity({.driver = sized({15, 5})}), 0);
  EXPECT_EQ(Capacity({.bus = {{"Size", Text("5")}}, .driver = {{"Size", Integer(5)}}}), 0);
}

TEST_F(Description, InterconnectTakesTheBranchOfItsFirstWord) {
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
  const auto type = [&](const char* name) {
    return Dictionary{unit0, {"device-type", Text(name)}};
  };
  const struct {
    Property interconnect;
    Dictionary around;
    std::string info;
    Dictionary below = {};
  } cases[] = {
      {Integer(1), {}, ""},
      {Text(std::string(250, 'x') + "ATA ATA"), {}, ""},
      {Text("Usb"), {{"locationID", Integer(16)}}, ""},
      {Text("Fibre Channel Interface"), {}, "Fibre Channel Interface"},
      // SCSI
      {scsi, {{"SCSI Target Identifier", Integer(2)}}, "SCSI:  ID = 2"},
      {Text("ATA on SCSI"), {}, "ATA on SCSI:  ID = 3", {{"SCSI Target", Integer(3)}}},
      {scsi, {{"SCSI Target Identifier", Text("2")}}, "", {{"SCSI Target", Integer(3)}}},
      {scsi, {{"SCSI Target Identifier", {platform::Number{15, 2}}}}, "SCSI:  ID = "},
      {scsi, {}, ""},
      // ATA without a unit number
      {ata, {}, "ATA"},
      {Text("SATA"), {{"Physical Interconnect Location", Text("Internal")}}, "SATA Internal"},
      {ata, {{"Physical Interconnect Location", Integer(1)}, {"unit number", Text("0")}}, "ATA"},
      // ATA with a bus
      {ata, busId({0, 0, 1, 0x0A}), "ATA Bus 10A: Dev 0"},
      {ata, busId({}), "ATA Bus 0: Dev 0"},
      {ata, {unit0, {"AAPL,bus-id", Integer(1)}}, "ATA Bus ???: Dev 0"},
      {ata, busId(Data(127, 0x11)), "ATA Bus " + std::string(247, '1')},
      {ata, busId(Data(128, 0x00)), "ATA Bus ???: Dev 0"},
      {ata, at({'C', 'h', 'a', 'n', 'n', 'e', 'l', ' ', '1', 0}), "Serial ATA Channel 1"},
      {ata, at({'B', 'a', 'y', 0xC3, 0xA9}), "ATA Bus Bay\xC3\xA9: Dev 0"},
      {ata, at({'B', 0xFF}), "ATA Bus 0: Dev 0"},
      {ata, at({}), "ATA Bus 0: Dev 0"},
      {ata, at(Data(256, 'b')), "ATA Bus 0: Dev 0"},
      {ata, {unit0, {"io-device-location", Text("Channel")}}, "ATA Bus ???: Dev 0"},
      {ata, {{"io-device-location", Bytes({'C'})}, bus2}, "ATA Bus 2: Dev 0", {unit0}},
      {ata, {unit0}, "ATA", {bus2}},
      // ATA without a bus
      {ata, {unit0, gen}, "Channel: 1", {{"Channel", Integer(1)}}},
      {ata, type("Generic2"), "device-type: Generic2"},
      {ata, type("Generic"), "ATA"},
      {ata, {unit0, gen, {"socket type", Text("Bay")}}, "Bay"},
      {ata, {unit0, {"device-type", Text("")}, {"socket type", Text("")}}, ""},
      {ata, {unit0, gen, {"socket type", Integer(1)}}, "ATA"},
      {ata, {unit0, {"device-type", Bytes({'G'})}}, "ATA"},
      {ata, type("caf\xC3\xA9"), "ATA"},
      {ata, {unit0}, "ATA", {{"device-type", Text("ATA")}}},
      // The longest texts, cut to what a string holds, and one that is too long
      {Text(longATA), {longUnit, {"io-device-location", Bytes(Data(255, 'b'))}}, longATA},
      {ata, {{"unit number", {platform::Float64Number(1e248)}}, bus2}, "ATA Bus 2: Dev "},
      // The others
      {Text("FireWire"),
       {{"GUID", Integer(0x11223344556677)}},
       "FireWire:  GUID = 7766554433221100"},
      {Text("FireWire"), {{"GUID", Text("1")}}, ""},
      {Text("USB"), {{"locationID", Integer(16)}}, "USB:  locationID = 16"},
      {Text("USB"), {}, ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Interconnect(c.interconnect, c.around, c.below), c.info) << &c - cases;
  }
}
