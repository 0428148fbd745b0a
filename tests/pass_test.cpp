// The pass as a whole: what is printed for which drive, what is called on it, and
// what it leaves open. The reports of the examples show the verdicts.
#include <cstring>

#include "probe/smart/threshold_rows.h"
#include "probe/state/drive_table.h"
#include "tests/support.h"

namespace test {

std::string Item(SInt16 row, SInt16 item) {
  const auto text = std::make_unique<char[]>(77);  // the most that is written
  std::strcpy(text.get(), "untouched");
  ThresholdsGetSetItemData(row, item, text.get());
  return text.get();
}

TEST(Pass, VersionDecidesWhatIsReadAndPrinted) {
  const std::tuple<SInt32, const char*, const char*> cases[] = {{0x101F, "", ""},
                                                                {0x1020, "OESDT", "232.89 GB"},
                                                                {0x102F, "OESDT", "232.89 GB"},
                                                                {0x1030, "OESDTI", "232.89 GB"},
                                                                {0x105F, "OESDTI", "232.89 GB"},
                                                                {0x1060, "OESDTI", "250.06 GB"}};
  for (const auto& [version, calls, capacity] : cases) {
    SCOPED_TRACE(version);
    auto drive = HealthyDrive();
    DeviceLines lines{.capacity = capacity};
    if (version < 0x1030) lines.revision = lines.serial = "";
    EXPECT_EQ(Report({AtaDevice(drive, "disk0", 250059350016)}, version),
              version < 0x1020 ? "" : lines.Text());
    EXPECT_EQ(drive->calls, calls);
    EXPECT_EQ(OpenReferences() == Ledger(), version < 0x1020);
  }
}

TEST(Pass, AtaGoesByNameAndFeaturesAndAhciByClass) {
  const auto with = [](const Property& features) {
    return Dictionary{{"Device Characteristics", Dict({{"ATA Features", features}})}};
  };
  const auto device = [](const char* name, const char* className, const Dictionary& properties) {
    return Entry{name, className, properties, {}, HealthyDrive()};
  };
  const char* const ata = "IOATABlockStorageDevice";
  const char* const ahci = "IOAHCIBlockStorageDevice";
  const Dictionary good = with(Integer(0x20));
  EXPECT_EQ(Report({device("Disk", ata, good), device(ahci, "Disk", good),
                    device(ata, ata, with(Integer(0x5F))),
                    device(ata, ata, with(Integer(1LL << 32 | 0x20))),
                    device(ata, ata, with({platform::Float64Number(32.5)})),
                    Entry{"Controller", "", good, {device(ata, ata, {})}, {}}}),
            "");
  Report({device(ata, "Disk", good), device("Port 0", ahci, {}),
          device(ata, ata, with({platform::Float64Number(32)})),
          device(ata, ata, with(Integer(-1)))});
  EXPECT_EQ(gSMARTDriveCount, 4);
}

TEST(Pass, ThresholdsMeetTheFirstOf30AttributesThatHasAValue) {
  auto drive = HealthyDrive();
  Drive::Block& data = drive->data;
  data = BlockOf({{3, 1, 0}, {9, 1, 7}, {3, 2, 60}, {3, 4, 70}, {7, 1, 100}});
  for (std::size_t i = 62; i < 512; i++) data[i] = static_cast<UInt8>(i % 251);
  // 99 is the last entry of both blocks. What comes after it would be attribute 111, and
  // a threshold of 9.
  drive->thresholds = BlockOf({{9, 5}, {0, 99}, {111, 6}, {3, 21}, {7, 6}});
  drive->thresholds[2 + 12 * 29] = 99;
  drive->thresholds[2 + 12 * 30] = 9;
  DeviceLines lines;
  lines.attributes =
      "SMARTStatus:::9:::Power On Hours Count:::256:::7:::5:::Pre-Fail:OK\n"
      "SMARTStatus:::3:::Spin-up Time:::512:::60:::21:::Life-Span:OK\n"
      "SMARTStatus:::7:::Seek Error Rate:::256:::No Data:::6:::Pre-Fail:OK\n"
      "SMARTStatus:::99:::Unknown Attribute:::25701:::102:::Always Passing:::Life-Span:OK\n";
  EXPECT_EQ(Report({AtaDevice(drive)}), lines.Text());

  EXPECT_EQ(Item(1, kItemAttribId), "111");
  EXPECT_EQ(Item(1, kItemCurrentValue), "0 (Invalid)");
  EXPECT_EQ(Item(1, kItemStatus), "Life-Span:OK");
  EXPECT_EQ(Item(4, 6), "untouched");
  const char* const percents[] = {"71.43%", "n/a", "35.00%", "n/a", "n/a"};
  for (SInt16 row = 0; row < 5; row++) {
    EXPECT_EQ(Item(row, kItemThresholdPercent), percents[row]) << row;
  }

  for (std::size_t word : {0U, 364U, 368U}) std::swap(data[word], data[word + 1]);
  for (std::size_t k = 0; k < 30; k++) std::swap(data[3 + 12 * k], data[4 + 12 * k]);
  EXPECT_EQ(std::memcmp(&gSavedATADriveInfoArray[0].smartData, data.data(), 512), 0);

  drive->thresholds = BlockOf({});
  Report({AtaDevice(drive)});
  EXPECT_EQ(gSavedThresholds[0].attribId, 0) << "the rows of the drive before are cleared";
}

TEST(Pass, DevicesBeyondTheTableGetOneFailureLineAndAreNotOpened) {
  std::vector<Entry> devices;
  std::string expected;
  for (int i = 0; i < 64; i++) {
    devices.push_back(AtaDevice(HealthyDrive(), "disk" + std::to_string(i)));
    expected += DeviceLines{.path = i < 63 ? "/dev/rdisk" + std::to_string(i) : ""}.Text();
  }
  const auto beyond = HealthyDrive();
  Entry noFeatures = AtaDevice(beyond, "disk65");
  noFeatures.properties.clear();
  devices.insert(devices.end(), {AtaDevice(beyond, "disk64", 5000), noFeatures,
                                 AtaDevice(beyond, "disk66"), AhciDevice(beyond, "disk67")});
  devices[63].children.clear();
  for (const char* disk : {"64", "66", "67"}) {
    expected += "GetSMARTFailed:/dev/rdisk" + std::string(disk) + ":0\n";
  }
  EXPECT_EQ(Report(devices), expected);
  EXPECT_EQ(beyond->calls, "");
  EXPECT_STREQ(gSavedATADriveInfoArray[63].bsdName, "") << "the last record stays as it is";
  EXPECT_EQ(OpenReferences(),
            (Ledger{{kPropertyDictionary, 67}, {kIterator, 2}, {kService, 4}, {kMemoryBlock, 1}}));
}

}  // namespace test
