// The pass as a whole: what is printed for which drive, what is called on it, and
// what it leaves open. The reports of the examples show the verdicts.
#include <cstring>

#include "probe/pass/start_up.h"
#include "probe/smart/threshold_rows.h"
#include "probe/state/drive_table.h"
#include "probe/state/process_state.h"
#include "tests/support.h"

using namespace std::string_literals;

namespace test {

std::string Item(SInt16 row, SInt16 item) {
  // 77: the most that is written
  return Written(77, [&](char* out) { ThresholdsGetSetItemData(row, item, out); }).data();
}

TEST(Pass, VersionDecidesWhatIsReadAndPrinted) {
  const std::vector<Entry> device = {AtaDevice(HealthyDrive(), "disk0", 250059350016)};
  EXPECT_EQ(Report(device, 0x101F), "");
  EXPECT_EQ(OpenReferences(), Ledger());
  DeviceLines lines{.revision = "", .capacity = "232.89 GB", .serial = ""};
  EXPECT_EQ(Report(device, 0x1020), lines.Text());
  EXPECT_EQ(Report(device, 0x102F), lines.Text());
  EXPECT_EQ(Report(device, 0x1030), DeviceLines{.capacity = "232.89 GB"}.Text());
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

TEST(Pass, WhatAFailedReadHasLeftIsReported) {
  DriveAnswers answers = HealthyAnswers();
  const Data data = BlockOf({{9, 1, 7}, {10, 1, 8}});
  const Data thresholds = BlockOf({{9, 5}, {10, 0}});
  const std::string first = "SMARTStatus:::9:::Power On Hours Count:::256:::7:::5:::Pre-Fail:OK\n";
  const std::string both =
      first + "SMARTStatus:::10:::Spin Retry Count:::256:::8:::Always Passing:::Pre-Fail:OK\n";
  const std::tuple<std::ptrdiff_t, bool, std::ptrdiff_t, bool, std::string> cases[] = {
      {512, true, 512, true, both},  {512, true, 512, false, both},
      {512, true, 14, false, first}, {14, true, 512, true, first},  // shorter: zeros
      {512, false, 512, true, ""},                                  // thresholds are not read
  };
  for (const auto& [dataLeft, hasData, thresholdsLeft, hasThresholds, lines] : cases) {
    answers.data = {Data(data.begin(), data.begin() + dataLeft), hasData};
    answers.thresholds = {Data(thresholds.begin(), thresholds.begin() + thresholdsLeft),
                          hasThresholds};
    EXPECT_EQ(Report({AtaDevice(DriveOf(answers))}), DeviceLines{.attributes = lines}.Text());
  }
  EXPECT_EQ(gSavedATADriveInfoArray[0].smartData.bytes[2], 9);
  EXPECT_EQ(std::memcmp(gSavedATADriveInfoArray[0].productNameP, "\013EXAMPLE 250", 12), 0);
}

TEST(Pass, ThresholdsMeetTheFirstOf30AttributesThatHasAValue) {
  DriveAnswers answers = HealthyAnswers();
  Data& data = answers.data.bytes;
  Data& thresholds = answers.thresholds.bytes;
  data = BlockOf({{3, 1, 0}, {9, 1, 7}, {3, 2, 60}, {3, 4, 70}, {7, 1, 100}});
  for (std::size_t i = 62; i < 512; i++) data[i] = static_cast<UInt8>(i % 251);
  // 99 is the last entry of both blocks. What comes after it would be attribute 111, and
  // a threshold of 9. What comes before the first is of the identify data.
  thresholds = BlockOf({{9, 5}, {0, 99}, {111, 6}, {3, 21}, {7, 6}, {120, 6}});
  thresholds[2 + 12 * 29] = 99;
  thresholds[2 + 12 * 30] = 9;
  DeviceLines lines;
  lines.attributes =
      "SMARTStatus:::9:::Power On Hours Count:::256:::7:::5:::Pre-Fail:OK\n"
      "SMARTStatus:::3:::Spin-up Time:::512:::60:::21:::Life-Span:OK\n"
      "SMARTStatus:::7:::Seek Error Rate:::256:::No Data:::6:::Pre-Fail:OK\n"
      "SMARTStatus:::99:::Unknown Attribute:::25701:::102:::Always Passing:::Life-Span:OK\n";
  EXPECT_EQ(Report({AtaDevice(DriveOf(answers))}), lines.Text());

  EXPECT_EQ(Item(1, kItemAttribId), "111");
  EXPECT_EQ(Item(1, kItemCurrentValue), "0 (Invalid)");
  EXPECT_EQ(Item(1, kItemStatus), "Life-Span:OK");
  EXPECT_EQ(Item(4, 6), "untouched");
  const char* const percents[] = {"71.43%", "n/a", "35.00%", "n/a", "n/a", "n/a"};
  for (SInt16 row = 0; row < 6; row++) {
    EXPECT_EQ(Item(row, kItemThresholdPercent), percents[row]) << row;
  }

  for (std::size_t word : {0U, 364U, 368U}) std::swap(data[word], data[word + 1]);
  for (std::size_t k = 0; k < 30; k++) std::swap(data[3 + 12 * k], data[4 + 12 * k]);
  EXPECT_EQ(std::memcmp(&gSavedATADriveInfoArray[0].smartData, data.data(), 512), 0);

  thresholds = BlockOf({});
  Report({AtaDevice(DriveOf(answers))});
  EXPECT_EQ(gSavedThresholds[0].attribId, 0) << "the rows of the drive before are cleared";
}

TEST(Pass, DevicesBeyondTheTableGetOneFailureLineAndAreNotOpened) {
  const std::string longest(1017, 'd');
  std::vector<Entry> devices;
  std::string expected;
  for (int i = 0; i < 64; i++) {
    devices.push_back(AtaDevice(HealthyDrive(), "disk" + std::to_string(i)));
    expected += DeviceLines{.path = i < 63 ? "/dev/rdisk" + std::to_string(i) : ""}.Text();
  }
  const Drive beyond = [] {
    ADD_FAILURE() << "it was opened";
    return DriveAnswers();
  };
  Entry noFeatures = AtaDevice(beyond, "disk65");
  noFeatures.properties.clear();
  devices.insert(devices.end(), {AtaDevice(beyond, "disk64", 5000), noFeatures,
                                 AtaDevice(beyond, longest), AhciDevice(beyond, "disk67")});
  devices[63].children.clear();
  for (const std::string& disk : {"disk64"s, longest, "disk67"s}) {
    expected += "GetSMARTFailed:/dev/r" + disk + ":0\n";
  }
  EXPECT_EQ(Report(devices), expected);
  EXPECT_STREQ(gSavedATADriveInfoArray[63].bsdName, "") << "the last record stays as it is";
  EXPECT_EQ(OpenReferences(),
            (Ledger{{kPropertyDictionary, 67}, {kIterator, 2}, {kService, 4}, {kMemoryBlock, 1}}));
}

TEST(Pass, OnABigEndianProcessorFieldsStayAndNoAhciDeviceIsLookedFor) {
  DriveAnswers answers = HealthyAnswers();
  answers.data.bytes[4] = 1;
  Entry device = AtaDevice(DriveOf(answers));
  device.properties.emplace("Serial Number", Text("REGISTRY"));
  Report({device, AhciDevice(HealthyDrive(), "disk1")});
  EXPECT_EQ(gSMARTDriveCount, 2);
  bLittleEndianCPU = false;
  const std::string printed = Printed(stdout, [] { SMARTPollingRoutine(nullptr, nullptr); });
  DeviceLines lines{.revision = "ER V    ", .serial = "ESIRLA              "};
  lines.attributes = "SMARTStatus:::194:::Temperature:::8705:::38:::Always Passing:::Pre-Fail:OK\n";
  EXPECT_EQ(printed, lines.Text());
}

}  // namespace test
