// What the registry tells of a drive: lookups around an entry, product name, BSD
// name, capacity, and how the drive is attached.
#include <cstring>

#include "platform/ledger.h"
#include "registry/device_description.h"
#include "registry/interconnect.h"
#include "registry/property_lookups.h"
#include "tests/support.h"

using platform::Dictionary;
using platform::Entry;
using platform::Ledger;
using platform::OpenReferences;
using platform::Property;
using test::Bytes;
using test::Dict;
using test::Integer;
using test::Real;
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

std::string LookedUpText(const Tree& tree) {
  const auto text = std::make_unique<char[]>(256);  // the most that is written
  std::memset(text.get(), 'x', 255);
  IOKitGetThisKeyCStr(DriveIn(tree), CFSTR("K"), text.get());
  return text.get();
}

std::string ProductName(const Property& name) {
  const io_service_t drive =
      DriveIn({.bus = {{"Device Characteristics", Dict({{"Product Name", name}})}}});
  const auto text = std::make_unique<char[]>(256);
  const auto pascal = std::make_unique<unsigned char[]>(256);
  IOKitUtilsGetDeviceProductNameCStr(drive, text.get());
  IOKitUtilsGetDeviceProductNamePStr(drive, pascal.get());
  EXPECT_EQ(std::string(pascal.get() + 1, pascal.get() + 1 + pascal[0]), text.get());
  return text.get();
}

std::string BSDName(const Tree& tree) {
  const auto text = std::make_unique<char[]>(1024);
  IOKitUtilsGetBDSName(DriveIn(tree), text.get());
  return text.get();
}

SInt64 Capacity(const Tree& tree) {
  SInt64 capacity = -1;
  IOKitUtilsGetDeviceSizeInBytes(DriveIn(tree), &capacity);
  return capacity;
}

std::string Interconnect(const Tree& tree) {
  const auto info = std::make_unique<char[]>(777);  // the most that is written
  IOKitUtilsGetDeviceInterfaceInfo(DriveIn(tree), info.get());
  return {info.get() + 1, static_cast<unsigned char>(info[0])};
}

Dictionary Protocol(Property interconnect, Dictionary more = {}) {
  more.push_back({"Physical Interconnect", std::move(interconnect)});
  return {{"Protocol Characteristics", Dict(std::move(more))}};
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
  const Dictionary text{{"K", Text("near")}};
  const Dictionary far{{"K", Text("far")}};
  const Dictionary number{{"K", Integer(7)}};
  const struct {
    Tree tree;
    std::string text;
  } cases[] = {
      {{.bus = far, .drive = text, .driver = far}, "near"},
      {{.root = far, .bus = text, .driver = far}, "near"},
      {{.root = text, .driver = far}, "near"},
      {{.driver = text, .partition = far, .other = far}, "near"},
      {{.partition = text, .other = far}, "near"},
      {{.other = text}, "near"},
      {{}, ""},
      {{.bus = number, .driver = text}, ""},  // a wrong type upwards ends the search
      {{.root = text, .bus = number}, ""},
      {{.bus = {{"K", Text(std::string(255, 'a'))}}}, std::string(255, 'a')},
      {{.bus = {{"K", Text(std::string(256, 'a'))}}}, ""},
      {{.bus = {{"K", Text("abc\xC3\xA9")}}}, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(LookedUpText(c.tree), c.text) << &c - cases;
}

TEST_F(Description, LookupsHandOutOnlyTheirType) {
  const Property values[] = {Text("t"), Integer(1),          Dict({}),          Bytes({1}),
                             {true},    {platform::Array{}}, {platform::Date{}}};
  for (const Property& value : values) {
    const io_service_t drive = DriveIn({.bus = {{"K", value}}});
    CFNumberRef number = nullptr;
    CFDictionaryRef dictionary = nullptr;
    IOKitGetThisKeyCFNumber(drive, CFSTR("K"), &number);
    IOKitGetThisKeyCFDictionary(drive, CFSTR("K"), &dictionary);
    EXPECT_EQ(number != nullptr, &value == &values[1]);
    EXPECT_EQ(dictionary != nullptr, &value == &values[2]);
    if (number != nullptr) CFRelease(number);
    if (dictionary != nullptr) CFRelease(dictionary);
  }
}

TEST_F(Description, ProductNameIsTrimmedAsciiOrNothing) {
  EXPECT_EQ(ProductName(Text("  EXAMPLE  250   ")), "EXAMPLE  250");
  EXPECT_EQ(ProductName(Text("    ")), "");
  EXPECT_EQ(ProductName(Text(std::string(255, 'n'))), std::string(255, 'n'));
  EXPECT_EQ(ProductName(Text(std::string(256, 'n'))), "");
  EXPECT_EQ(ProductName(Text("EXAMPLE\xC2\xA0"
                             "250")),
            "");
  EXPECT_EQ(ProductName(Integer(250)), "");
}

TEST_F(Description, BSDNameIsTheEntrysOrADescendants) {
  const auto named = [](Property name) { return Dictionary{{"BSD Name", std::move(name)}}; };
  EXPECT_EQ(BSDName({.drive = named(Text("disk1")), .driver = named(Text("disk2"))}),
            "/dev/rdisk1");
  EXPECT_EQ(BSDName({.partition = named(Text("disk2")), .other = named(Text("disk3"))}),
            "/dev/rdisk2");
  EXPECT_EQ(BSDName({.bus = named(Text("disk0"))}), "");
  EXPECT_EQ(BSDName({.drive = named(Integer(1)), .driver = named(Text("disk2"))}), "");
  EXPECT_EQ(BSDName({.drive = named(Text("disk\xC3\xA9"))}), "/dev/r");
  EXPECT_EQ(BSDName({.drive = named(Text(std::string(1017, 'd')))}),
            "/dev/r" + std::string(1017, 'd'));
  EXPECT_EQ(BSDName({.drive = named(Text(std::string(1018, 'd')))}), "/dev/r");
}

TEST_F(Description, CapacityKeepsTheWidthOfItsNumber) {
  const auto sized = [](platform::Number number) { return Dictionary{{"Size", {number}}}; };
  EXPECT_EQ(Capacity({.partition = {{"Size", Integer(250059350016)}}}), 250059350016);
  EXPECT_EQ(Capacity({.driver = sized({kCFNumberSInt32Type, static_cast<std::uint64_t>(-1)})}),
            0xFFFFFFFFLL);
  EXPECT_EQ(Capacity({.driver = sized({kCFNumberSInt16Type, 0x1234})}), 0x1234);
  EXPECT_EQ(Capacity({.driver = sized({15, 5})}), 0);
  EXPECT_EQ(Capacity({}), 0);
  EXPECT_EQ(Capacity({.bus = {{"Size", Text("5")}}, .driver = {{"Size", Integer(5)}}}), 0);
}

TEST_F(Description, InterconnectTakesTheBranchOfItsFirstWord) {
  const Dictionary unit0{{"unit number", Integer(0)}};
  const auto plus = [](Dictionary one, Dictionary other) {
    one.insert(one.end(), other.begin(), other.end());
    return one;
  };
  const auto ata = Protocol(Text("ATA"));
  const auto ataUnit = [&](const char* key, Property value) {
    return Tree{.bus = plus(unit0, {{key, std::move(value)}}), .drive = ata};
  };
  const auto type = [](const char* deviceType, Dictionary more = {}) {
    more.push_back({"device-type", Text(deviceType)});
    return more;
  };
  const std::string longATA = "ATA" + std::string(252, 'i');
  const struct {
    Tree tree;
    std::string info;
  } cases[] = {
      {{}, ""},
      {{.bus = Protocol(Integer(1))}, ""},
      {{.bus = Protocol(Text(std::string(250, 'x') + "ATA ATA"))}, ""},
      {{.bus = Protocol(Text("PCI-Express"))}, ""},
      {{.bus = Protocol(Text("Usb"))}, ""},
      {{.bus = Protocol(Text("Fibre Channel Interface"))}, "Fibre Channel Interface"},
      // SCSI
      {{.bus = Protocol(Text("SCSI"), {{"SCSI Target Identifier", Integer(2)}})}, "SCSI:  ID = 2"},
      {{.bus = Protocol(Text("ATA over SCSI")), .driver = {{"SCSI Target", Integer(3)}}},
       "ATA over SCSI:  ID = 3"},
      {{.bus = Protocol(Text("SCSI"), {{"SCSI Target Identifier", Text("2")}}),
        .driver = {{"SCSI Target", Integer(3)}}},
       ""},
      {{.bus = Protocol(Text("SCSI"))}, ""},
      {{.bus = Protocol(Text("SCSI"), {{"SCSI Target Identifier", {platform::Number{15, 2}}}})},
       "SCSI:  ID = "},
      // ATA without a unit number
      {{.bus = ata}, "ATA"},
      {{.bus = Protocol(Text("SATA"), {{"Physical Interconnect Location", Text("Internal")}})},
       "SATA Internal"},
      {{.bus = Protocol(Text("ATA"), {{"Physical Interconnect Location", Integer(1)}}),
        .driver = {{"unit number", Text("0")}}},
       "ATA"},
      // ATA with a bus
      {ataUnit("AAPL,bus-id", Bytes({0, 0, 0, 1})), "ATA Bus 1: Dev 0"},
      {ataUnit("AAPL,bus-id", Bytes({0, 0, 1, 0x0A})), "ATA Bus 10A: Dev 0"},
      {ataUnit("AAPL,bus-id", Bytes({0, 0})), "ATA Bus 0: Dev 0"},
      {ataUnit("AAPL,bus-id", Bytes({})), "ATA Bus 0: Dev 0"},
      {ataUnit("AAPL,bus-id", Integer(1)), "ATA Bus ???: Dev 0"},
      {ataUnit("AAPL,bus-id", Bytes(platform::Data(127, 0x11))),
       "ATA Bus " + std::string(247, '1')},
      {ataUnit("AAPL,bus-id", Bytes(platform::Data(128, 0x00))), "ATA Bus ???: Dev 0"},
      {ataUnit("io-device-location", Bytes({'C', 'h', 'a', 'n', 'n', 'e', 'l', ' ', '1', 0})),
       "Serial ATA Channel 1"},
      {ataUnit("io-device-location", Bytes({'B', 'a', 'y', 0xC3, 0xA9})),
       "ATA Bus Bay\xC3\xA9: Dev 0"},
      {ataUnit("io-device-location", Bytes({'B', 0xFF})), "ATA Bus 0: Dev 0"},
      {ataUnit("io-device-location", Bytes({})), "ATA Bus 0: Dev 0"},
      {ataUnit("io-device-location", Bytes(platform::Data(256, 'b'))), "ATA Bus 0: Dev 0"},
      {ataUnit("io-device-location", Text("Channel 1")), "ATA Bus ???: Dev 0"},
      {{.drive = plus(ata, unit0), .driver = {{"AAPL,bus-id", Bytes({1})}}}, "ATA"},
      {{.bus = {{"AAPL,bus-id", Bytes({2})}},
        .drive = plus(ata, {{"io-device-location", Bytes({'C'})}}),
        .partition = {{"unit number", Integer(1)}}},
       "ATA Bus 2: Dev 1"},
      // ATA without a bus
      {{.drive = ata, .driver = {{"unit number", Integer(1)}, {"Channel", Integer(1)}}},
       "Channel: 1"},
      {{.bus = type("ATA"), .drive = plus(ata, unit0)}, "device-type: ATA"},
      {{.bus = type("Generic2"), .drive = plus(ata, unit0)}, "device-type: Generic2"},
      {{.bus = type("Generic"), .drive = plus(ata, unit0)}, "ATA"},
      {{.bus = type("Gen", {{"socket type", Text("Bay")}}), .drive = plus(ata, unit0)}, "Bay"},
      {{.bus = type("", {{"socket type", Text("")}}), .drive = plus(ata, unit0)}, ""},
      {{.bus = type("Gen", {{"socket type", Integer(1)}}), .drive = plus(ata, unit0)}, "ATA"},
      {{.bus = {{"device-type", Bytes({'G'})}}, .drive = plus(ata, unit0)}, "ATA"},
      {{.bus = type("caf\xC3\xA9"), .drive = plus(ata, unit0)}, "ATA"},
      {{.drive = plus(ata, unit0), .driver = type("ATA")}, "ATA"},
      // The longest texts, cut to what a string holds
      {{.bus = {{"unit number", Real(1e247)},
                {"io-device-location", Bytes(platform::Data(255, 'b'))}},
        .drive = Protocol(Text(longATA))},
       longATA},
      {{.bus = {{"unit number", Real(1e248)}, {"AAPL,bus-id", Bytes({1})}}, .drive = ata},
       "ATA Bus 1: Dev "},
      // The others
      {{.bus = Protocol(Text("FireWire")), .driver = {{"GUID", Integer(0x0011223344556677)}}},
       "FireWire:  GUID = 7766554433221100"},
      {{.bus = Protocol(Text("FireWire")), .driver = {{"GUID", Text("1")}}}, ""},
      {{.bus = Protocol(Text("USB")), .driver = {{"locationID", Integer(16)}}},
       "USB:  locationID = 16"},
      {{.bus = Protocol(Text("USB"))}, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(Interconnect(c.tree), c.info) << &c - cases;
}
