// From the two S.M.A.R.T. blocks to attribute lines: byte order, names, pairing,
// columns and verdicts.
#include "smart/threshold_rows.h"

#include <cstring>

#include "probe/drive_table.h"
#include "probe/start_up.h"
#include "tests/support.h"

using test::Attribute;
using test::Threshold;

namespace {

SavedATADriveInfo MakeDrive(const char* productName, std::initializer_list<Attribute> attributes,
                            std::initializer_list<Threshold> thresholds) {
  SavedATADriveInfo drive = {};
  std::strcpy(drive.productName, productName);
  const auto data = test::DataBlock(attributes);
  const auto limits = test::ThresholdBlock(thresholds);
  std::memcpy(&drive.smartData, data.data(), data.size());
  std::memcpy(&drive.smartThresholds, limits.data(), limits.size());
  return drive;
}

std::string LinesOf(SavedATADriveInfo& drive) {
  bLittleEndianCPU = true;
  gActiveATADrive = &drive;
  testing::internal::CaptureStdout();
  SyncThresholdData();
  return testing::internal::GetCapturedStdout();
}

std::string Item(SInt16 row, SInt16 item) {
  const auto text = std::make_unique<char[]>(77);  // the most that is written
  std::strcpy(text.get(), "untouched");
  ThresholdsGetSetItemData(row, item, text.get());
  return text.get();
}

}  // namespace

TEST(ThresholdRows, ColumnsAndVerdicts) {
  const char* const kPreFailure = "Pre-Fail:Pre-Failure Warning: Imminent loss of data predicted";
  const char* const kAdvisory =
      "Life-Span:Advisory Condition: Attribute has exeeded intended life expectancy";
  const struct {
    Attribute attribute;
    std::uint8_t threshold;
    std::string line;
  } cases[] = {
      {{194, 0x22, 38}, 0, "194:::Temperature:::8704:::38:::Always Passing:::Life-Span:OK"},
      {{5, 0x33, 100}, 36, "5:::Reallocated Sector Count:::13056:::No Data:::36:::Pre-Fail:OK"},
      {{1, 0x0F, 51}, 51, std::string("1:::Raw Read Error Rate:::3840:::51:::51:::") + kPreFailure},
      {{1, 0x0F, 52}, 51, "1:::Raw Read Error Rate:::3840:::52:::51:::Pre-Fail:OK"},
      {{9, 0x32, 1}, 2, std::string("9:::Power On Hours Count:::12800:::1:::2:::") + kAdvisory},
      {{9, 0x32, 100},
       100,
       std::string("9:::Power On Hours Count:::12800:::No Data:::100:::") + kAdvisory},
      {{9, 0x32, 253},
       254,
       std::string("9:::Power On Hours Count:::12800:::253:::254 (Invalid):::") + kAdvisory},
      {{9, 0x32, 254},
       253,
       "9:::Power On Hours Count:::12800:::254 (Invalid):::253:::Life-Span:OK"},
      {{9, 0x32, 255},
       254,
       "9:::Power On Hours Count:::12800:::255 (Invalid):::254 (Invalid):::Life-Span:OK"},
      {{9, 0x32, 255},
       255,
       std::string("9:::Power On Hours Count:::12800:::255 (Invalid):::Always Failing:::") +
           kAdvisory},
      {{255, 0x01, 99}, 9, "255:::Unknown Attribute:::256:::99:::9:::Pre-Fail:OK"},
  };
  for (const auto& c : cases) {
    auto drive = MakeDrive("", {c.attribute}, {{c.attribute.id, c.threshold}});
    EXPECT_EQ(LinesOf(drive), "SMARTStatus:::" + c.line + "\n");
  }
}

TEST(ThresholdRows, PairsByIdentifierAndKeepsARowForEachThreshold) {
  auto drive = MakeDrive("", {{3, 1, 0}, {9, 1, 7}, {3, 2, 60}, {3, 4, 70}},
                         {{9, 5}, {0, 99}, {12, 6}, {3, 21}});
  EXPECT_EQ(LinesOf(drive),
            "SMARTStatus:::9:::Power On Hours Count:::256:::7:::5:::Pre-Fail:OK\n"
            "SMARTStatus:::3:::Spin-up Time:::512:::60:::21:::Life-Span:OK\n");
  EXPECT_EQ(Item(0, kItemThresholdPercent), "71.43%");
  EXPECT_EQ(Item(1, kItemAttribId), "12");
  EXPECT_EQ(Item(1, kItemCurrentValue), "0 (Invalid)");
  EXPECT_EQ(Item(1, kItemThresholdPercent), "n/a");
  EXPECT_EQ(Item(1, kItemStatus), "Life-Span:OK");
  EXPECT_EQ(Item(2, kItemAttribName), "Spin-up Time");
  EXPECT_EQ(Item(2, 6), "untouched");
  EXPECT_EQ(Item(2, -1), "untouched");
  EXPECT_EQ(gSavedThresholds[3].attribId, 0);

  auto empty = MakeDrive("", {{3, 1, 60}}, {});
  EXPECT_EQ(LinesOf(empty), "");
  EXPECT_EQ(gSavedThresholds[0].attribId, 0) << "the rows of the drive before are cleared";
}

TEST(ThresholdRows, PercentIsASinglePrecisionQuotient) {
  const struct {
    std::uint8_t threshold, value;
    const char* text;
  } cases[] = {{36, 200, "18.00%"}, {6, 7, "85.71%"}, {51, 30, "170.00%"}, {1, 160, "0.62%"},
               {0, 50, "n/a"},      {50, 0, "n/a"},   {50, 100, "n/a"}};
  for (const auto& c : cases) {
    gSavedThresholds[29] = {0, "", 1, c.threshold, c.value};
    EXPECT_EQ(Item(29, kItemThresholdPercent), c.text);
  }
}

TEST(DataBlocks, ExchangesTheWordsAndNothingElse) {
  ATASMARTData data;
  for (int i = 0; i < 512; i++) data.bytes[i] = static_cast<UInt8>(i % 251);
  ATASMARTData expected = data;
  for (int word : {0, 364, 368}) std::swap(expected.bytes[word], expected.bytes[word + 1]);
  for (int k = 0; k < 30; k++) std::swap(expected.bytes[3 + 12 * k], expected.bytes[4 + 12 * k]);
  SwapSMARTDataBytes(&data);
  EXPECT_EQ(std::memcmp(&data, &expected, sizeof data), 0);
}

TEST(AttributeNames, DependOnTheMakerAsItIsSpelled) {
  const struct {
    int id;
    const char* name;
    const char* maxtorName;
  } cases[] = {{0, "Unknown Attribute", nullptr},
               {1, "Raw Read Error Rate", nullptr},
               {13, "Read Soft Error Rate", nullptr},
               {14, "Unknown Attribute", nullptr},
               {188, "Unknown Attribute", nullptr},
               {192, "Power-Off Retraction Count",
                "Emergency\xCARetract\xCA"
                "Cycles"},
               {195,
                "On\xCAThe\xCA"
                "Fly\xCA"
                "Error\xCARate",
                nullptr},
               {196, "Offline Reallocation Event Count", nullptr},
               {197, "Current Pending Sector",
                "Probational\xCASector\xCA"
                "Count"},
               {201,
                "Off\xCATrack\xCA"
                "Errors",
                nullptr},
               {202, "TA Increase Count", "Data Address Mark Errors"},
               {203, "Run Out Cancel", "ECC Errors"},
               {204, "Shock Count Write Operation", "Soft ECC Correction"},
               {205, "Shock Rate Write Operation", "Thermal Asperity Rate"},
               {209, "Offline Seek Performnce", nullptr},
               {228, "Power-off Retraction Count", nullptr},
               {229, "Unknown Attribute", nullptr},
               {231, "Temperature", nullptr},
               {250, "Read Error Retry Rate", nullptr},
               {251, "Unknown Attribute", nullptr}};
  for (const auto& c : cases) {
    const auto name = std::make_unique<char[]>(33);  // the most that is written
    GetSmartAttribName(static_cast<UInt8>(c.id), 0, name.get());
    EXPECT_STREQ(name.get(), c.name);
    GetSmartAttribName(static_cast<UInt8>(c.id), 2, name.get());
    EXPECT_STREQ(name.get(), c.maxtorName == nullptr ? c.name : c.maxtorName);
  }
  for (const auto& [product, isMaxtor] : {std::pair{"MAXTOR 6L040J2", true},
                                          {"QUANTUM by Maxtor", true},
                                          {"maxtor", false},
                                          {"", false}}) {
    auto drive = MakeDrive(product, {{197, 0, 50}}, {{197, 0}});
    EXPECT_EQ(LinesOf(drive).find("Probational\xCA") != std::string::npos, isMaxtor) << product;
  }
}
