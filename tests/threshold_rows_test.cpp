// From the two S.M.A.R.T. blocks to attribute lines: byte order, names, pairing and
// columns. The reports of the examples show the verdicts.
#include "smart/threshold_rows.h"

#include <cstring>

#include "probe/drive_table.h"
#include "probe/start_up.h"
#include "tests/support.h"

namespace {

using Entries = std::initializer_list<test::BlockEntry>;

std::string LinesOf(const char* productName, Entries attributes, Entries thresholds) {
  SavedATADriveInfo drive = {};
  std::strcpy(drive.productName, productName);
  const auto data = test::BlockOf(attributes);
  const auto limits = test::BlockOf(thresholds);
  std::memcpy(&drive.smartData, data.data(), data.size());
  std::memcpy(&drive.smartThresholds, limits.data(), limits.size());
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

TEST(ThresholdRows, PairsByIdentifierAndKeepsARowForEachThreshold) {
  EXPECT_EQ(LinesOf("", {{3, 1, 0}, {9, 1, 7}, {3, 2, 60}, {3, 4, 70}},
                    {{9, 5}, {0, 99}, {12, 6}, {3, 21}}),
            "SMARTStatus:::9:::Power On Hours Count:::256:::7:::5:::Pre-Fail:OK\n"
            "SMARTStatus:::3:::Spin-up Time:::512:::60:::21:::Life-Span:OK\n");
  EXPECT_EQ(Item(1, kItemAttribId), "12");
  EXPECT_EQ(Item(1, kItemCurrentValue), "0 (Invalid)");
  EXPECT_EQ(Item(1, kItemStatus), "Life-Span:OK");
  EXPECT_EQ(Item(2, kItemAttribName), "Spin-up Time");
  EXPECT_EQ(Item(2, 6), "untouched");

  EXPECT_EQ(LinesOf("", {{3, 1, 60}}, {}), "");
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
  gSavedThresholds[29] = {0, "", 1, 9, 9};
  EXPECT_EQ(Item(29, kItemStatus).size(), 76U);
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
    UInt8 id;
    const char* name;
    const char* maxtorName;
  } cases[] = {{0, "Unknown Attribute", "Unknown Attribute"},
               {196, "Offline Reallocation Event Count", "Offline Reallocation Event Count"},
               {203, "Run Out Cancel", "ECC Errors"},
               {250, "Read Error Retry Rate", "Read Error Retry Rate"}};
  for (const auto& c : cases) {
    const auto name = std::make_unique<char[]>(33);  // the most that is written
    GetSmartAttribName(c.id, 0, name.get());
    EXPECT_STREQ(name.get(), c.name);
    GetSmartAttribName(c.id, 2, name.get());
    EXPECT_STREQ(name.get(), c.maxtorName);
  }
  for (const auto& [product, name] : {std::pair{"QUANTUM by MAXTOR", "ECC Errors"},
                                      {"QUANTUM by Maxtor", "ECC Errors"},
                                      {"maxtor", "Run Out Cancel"}}) {
    EXPECT_NE(LinesOf(product, {{203, 0, 50}}, {{203, 0}}).find(name), std::string::npos);
  }
}
