// The description of a drive: what the registry knows of it and how that is found, byte counts and
// numbers as text, and the tidying of fields.
#include <bit>
#include <cfloat>

#include "platform/objects.h"
#include "probe/registry/device_description.h"
#include "probe/registry/interconnect.h"
#include "probe/registry/property_lookups.h"
#include "probe/state/process_state.h"
#include "probe/text/byte_count_labels.h"
#include "probe/text/value_to_text.h"
#include "tests/support.h"

namespace test {

// Root > Bus > Drive > (Driver > Partition, Other), with properties for each.
struct Tree {
  Dictionary root = {}, bus = {}, drive = {}, driver = {}, partition = {}, other = {};
};

// What `write` writes of the drive of that tree. Nothing but the drive's service is open then.
std::vector<char> Told(const Tree& t, std::size_t size,
                       const std::function<void(io_service_t, char*)>& write) {
  Entry driver{"Driver", "", t.driver, {{"Partition", "", t.partition}}};
  Entry drive{"Drive", "", t.drive, {driver, {"Other", "", t.other}}};
  Install({{"Root", "", t.root, {{"Bus", "", t.bus, {drive}}}}});
  auto text = Written(size, [&](char* out) { write(ServiceNamed("Drive"), out); });
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
    EXPECT_EQ(Told(tree, 256, lookUp).data(), text);
    EXPECT_EQ(Told(tree, 1024, IOKitUtilsGetBDSName).data(), path);
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
    EXPECT_EQ(PascalText(Told(tree, 256, look)), trimmed);
  }
}

TEST(Description, CapacityKeepsTheWidthOfItsNumber) {
  SInt64 capacity = -1;
  Told({.partition = {{"Size", Integer(-1)}}}, 10,
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
      {scsi, {{"SCSI Target Identifier", Integer(16)}}, "SCSI:  ID = 16"},
      {Text("ATA on SCSI"), {}, "ATA on SCSI:  ID = 3", {{"SCSI Target", Integer(3)}}},
      {scsi, {{"SCSI Target Identifier", Text("2")}}, "", {{"SCSI Target", Integer(3)}}},
      {scsi, {{"SCSI Target Identifier", {platform::Number{15, 2}}}}, "SCSI:  ID = "},
      {scsi, {}, ""},
      {Text("SATA"), {{"Physical Interconnect Location", Text("Internal")}}, "SATA Internal"},
      {ata, {{"Physical Interconnect Location", Integer(1)}, {"unit number", Text("0")}}, "ATA"},
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
      {ata, {unit0, gen}, "Channel: 1", {{"Channel", Integer(1)}}},
      {ata, {unit0, {"device-type", Text("Generic2")}}, "device-type: Generic2"},
      {ata, {unit0, gen, {"socket type", Text("Bay")}}, "Bay"},
      {ata, {unit0, {"device-type", Text("caf\xC3\xA9")}}, "ATA"},
      // The longest texts, cut to what a string holds, and one that is too long
      {Text(longATA), {longUnit, {"io-device-location", Bytes(Data(255, 'b'))}}, longATA},
      {ata, {{"unit number", {platform::Float64Number(-DBL_MAX)}}, bus2}, "ATA Bus 2: Dev "},
      {Text("FireWire"), {{"GUID", Integer(2LL << 32)}}, "FireWire:  GUID = 0000000002000000"},
      {Text("USB"), {{"locationID", Integer(16)}}, "USB:  locationID = 16"},
  };
  // All of `around` stands beside the protocol characteristics and in them too.
  for (auto [interconnect, around, info, below] : cases) {
    Dictionary protocol = around;
    protocol.emplace("Physical Interconnect", interconnect);
    around.emplace("Protocol Characteristics", Dict(protocol));
    const Tree tree = {.bus = around, .driver = below};
    // 777: the most that is written
    EXPECT_EQ(PascalText(Told(tree, 777, IOKitUtilsGetDeviceInterfaceInfo)), info);
  }
}

std::string Label(SInt64 count, SInt32 version, bool fullNames) {
  gMySysVersion = version;
  const std::size_t most = fullNames ? 266 : 12;  // that is written
  return Written(most, [&](char* out) { BytesSInt64ToCStrWLabel(count, out, fullNames); }).data();
}

std::string Converted(platform::Number number, bool isHex) {
  const platform::ValueObject object(&number);
  const auto* const ref = static_cast<CFNumberRef>(platform::Ref(&object));
  return Written(kNumberTextSize, [&](char* out) { ConvertCFNumberToCStr(ref, out, isHex); })
      .data();
}

TEST(Labels, AllColumns) {
  const std::string m255(255, 'm');
  platform::SetMachine(
      platform::Machine{.mainBundleStrings = {{"Gigabytes", "Gigaoctets\xC3\xA9"},
                                              {"Megabytes", m255},
                                              {"Terabytes", std::string(256, 't')}}});
  // Decimal, with full names, binary, with full names.
  const std::pair<SInt64, std::array<std::string, 4>> cases[] = {
      {0, {"0 B", "0 Bytes", "0 B", "0 Bytes"}},
      {1000, {"1.00 KB", "1 Kilobytes", "1000 B", "1000 Bytes"}},
      {1048575, {"1.05 MB", "1.048 " + m255, "1024.00 KB", "1023.999 Kilobytes"}},
      {1048577, {"1.05 MB", "1.048 " + m255, "1.00 MB", "1 " + m255}},
      {-1023999999, {"-1.02 GB", "-1.023 Gigaoctets\xC3\xA9", "-976.56 MB", "-976.562 " + m255}},
      {1000204886016, {"1.00 TB", "untouched", "931.51 GB", "931.513 Gigaoctets\xC3\xA9"}},
      {3000000000000000, {"3.00 PB", "3 PetaBytes", "2.66 PB", "2.664 PetaBytes"}},
      {-1, {"-1 B", "-1 Bytes", "-1 B", "-1 Bytes"}},
      {INT64_MIN, {"-9.22 EB", "-9.223 ExaBytes", "-8.00 EB", "-7.999 ExaBytes"}},
  };
  for (const auto& [count, labels] : cases) {
    for (std::size_t i = 0; i < 4; i++) {
      EXPECT_EQ(Label(count, i < 2 ? 0x1060 : 0x105F, i % 2 == 1), labels[i]);
    }
  }
  EXPECT_EQ(OpenReferences(), Ledger());
}

TEST(NumberText, EachTypeInBothModes) {
  const std::tuple<platform::Number, const char*, const char*> cases[] = {
      {{kCFNumberSInt8Type, ~0ULL}, "\xFF", "FF"},
      {{kCFNumberSInt16Type, ~0ULL}, "-1", "FFFF"},
      {{kCFNumberSInt32Type, ~0ULL}, "-1", "FFFFFFFF"},
      {{kCFNumberLongType, 0x7FFFFFFF}, "2147483647", "7FFFFFFF"},
      {{kCFNumberLongLongType, 0x0011223344556677}, "4822678189205111", "7766554433221100"},
      {{kCFNumberFloat32Type, 0xBE800000}, "-0.250000", "-0.250000"},
      {{kCFNumberCFIndexType, 7}, "", ""},
      {{15, 7}, "untouched", "untouched"},
  };
  for (const auto& [number, decimal, hexadecimal] : cases) {
    EXPECT_EQ(Converted(number, false), decimal);
    EXPECT_EQ(Converted(number, true), hexadecimal);
  }
  EXPECT_EQ(Converted(platform::Float64Number(-DBL_MAX), false).size(), kNumberTextSize - 1U);
}

TEST(Fields, AreReversedInThreeSizesAndOnlyWhereItMatters) {
  const std::tuple<bool, UInt32, const char*> cases[] = {
      {true, 2, "bacdefgh"}, {true, 4, "dcbaefgh"},  {true, 8, "hgfedcba"},
      {true, 3, "abcdefgh"}, {false, 2, "abcdefgh"},
  };
  for (const auto& [isLittleEndian, size, reversed] : cases) {
    std::string field = "abcdefgh";
    bLittleEndianCPU = isLittleEndian;
    ReverseBytesCheck(field.data(), size);
    EXPECT_EQ(field, reversed);
  }
  StripAllSpaces(nullptr);
}

}  // namespace test
