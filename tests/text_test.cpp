// Byte counts, numbers and data as text, and the tidying of texts and fields.
#include <Carbon/Carbon.h>

#include <algorithm>
#include <array>
#include <cfloat>
#include <cstring>

#include "platform/objects.h"
#include "probe/start_up.h"
#include "tests/support.h"
#include "text/byte_count_labels.h"
#include "text/value_to_text.h"

using platform::Ledger;
using platform::Number;
using platform::OpenReferences;

namespace {

bool callsFail = false;

std::string Label(SInt64 count, SInt32 version, bool fullNames) {
  gMySysVersion = version;
  const auto text = std::make_unique<char[]>(fullNames ? 266 : 12);  // the most that is written
  std::strcpy(text.get(), "untouched");
  BytesSInt64ToCStrWLabel(count, text.get(), fullNames);
  return text.get();
}

std::string Converted(Number number, bool hexadecimal) {
  const platform::NumberObject object(number);
  const auto text = std::make_unique<char[]>(kNumberTextSize);
  std::strcpy(text.get(), "untouched");
  ConvertCFNumberToCStr(static_cast<CFNumberRef>(platform::Ref(&object)), text.get(), hexadecimal);
  return text.get();
}

}  // namespace

// The linker sends the probe's calls here first.
extern "C" {

CFStringRef __real_CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key,
                                               CFStringRef value, CFStringRef table);
CFStringRef __wrap_CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key,
                                               CFStringRef value, CFStringRef table) {
  return callsFail ? nullptr : __real_CFBundleCopyLocalizedString(bundle, key, value, table);
}

Ptr __real_NewPtr(Size byteCount);
Ptr __wrap_NewPtr(Size byteCount) { return callsFail ? nullptr : __real_NewPtr(byteCount); }

}  // extern "C"

TEST(Labels, AllColumns) {
  const struct {
    SInt64 count;
    std::array<const char*, 4> labels;  // decimal, with full names, binary, with full names
  } cases[] = {
      {999, {"999 B", "999 Bytes", "999 B", "999 Bytes"}},
      {1000, {"1.00 KB", "1 Kilobytes", "1000 B", "1000 Bytes"}},
      {1023, {"1.02 KB", "1.023 Kilobytes", "1023 B", "1023 Bytes"}},
      {1024, {"1.02 KB", "1.024 Kilobytes", "1.00 KB", "1 Kilobytes"}},
      {1065, {"1.07 KB", "1.065 Kilobytes", "1.04 KB", "1.040 Kilobytes"}},
      {1152, {"1.15 KB", "1.152 Kilobytes", "1.12 KB", "1.125 Kilobytes"}},
      {2047, {"2.05 KB", "2.047 Kilobytes", "2.00 KB", "1.999 Kilobytes"}},
      {999999, {"1000.00 KB", "999.999 Kilobytes", "976.56 KB", "976.562 Kilobytes"}},
      {1048575, {"1.05 MB", "1.048 Megabytes", "1024.00 KB", "1023.999 Kilobytes"}},
      {1048577, {"1.05 MB", "1.048 Megabytes", "1.00 MB", "1 Megabytes"}},
      {250059350016, {"250.06 GB", "250.059 Gigabytes", "232.89 GB", "232.886 Gigabytes"}},
      {1000204886016, {"1.00 TB", "1 Terabytes", "931.51 GB", "931.513 Gigabytes"}},
      {3000000000000000, {"3.00 PB", "3 PetaBytes", "2.66 PB", "2.664 PetaBytes"}},
      {INT64_MAX, {"9.22 EB", "9.223 ExaBytes", "8.00 EB", "7.999 ExaBytes"}},
      {-1, {"-1 B", "-1 Bytes", "-1 B", "-1 Bytes"}},
      {-1536, {"-1.54 KB", "-1.536 Kilobytes", "-1.50 KB", "-1.500 Kilobytes"}},
      {INT64_MIN, {"-9.22 EB", "-9.223 ExaBytes", "-8.00 EB", "-7.999 ExaBytes"}},
  };
  for (const auto& c : cases) {
    const std::array labels = {Label(c.count, 0x1060, false), Label(c.count, 0x1060, true),
                               Label(c.count, 0x105F, false), Label(c.count, 0x105F, true)};
    EXPECT_TRUE(std::ranges::equal(labels, c.labels)) << c.count << testing::PrintToString(labels);
  }
}

TEST(Labels, FullNamesCanBeTranslatedOrMissing) {
  const Ledger before = OpenReferences();
  test::Install({}).mainBundleStrings = {{"Gigabytes", "Gigaoctets\xC3\xA9"},
                                         {"Megabytes", std::string(255, 'm')},
                                         {"Kilobytes", std::string(256, 'k')}};
  EXPECT_EQ(Label(-250059350016, 0x1060, true), "-250.059 Gigaoctets\xC3\xA9");
  EXPECT_EQ(Label(-1023999999, 0x1058, true), "-976.562 " + std::string(255, 'm'));
  EXPECT_EQ(Label(1025, 0x1058, true), "untouched");
  callsFail = true;
  EXPECT_EQ(Label(5, 0x1060, true), "untouched");
  callsFail = false;
  EXPECT_EQ(OpenReferences() - before, Ledger{});
}

TEST(NumberText, EachTypeInBothModes) {
  const auto bits = [](std::int64_t value) { return static_cast<std::uint64_t>(value); };
  const auto float32 = platform::Float32Number(-0.25F).bits;
  const auto float64 = platform::Float64Number(2e9).bits;
  const struct {
    Number number;
    const char* decimal;
    const char* hexadecimal;
  } cases[] = {
      {{0, 5}, "untouched", "untouched"},
      {{kCFNumberSInt8Type, 65}, "A", "41"},
      {{kCFNumberCharType, bits(-1)}, "\xFF", "FF"},
      {{kCFNumberSInt16Type, bits(-1)}, "-1", "FFFF"},
      {{kCFNumberShortType, 10}, "10", "A"},
      {{kCFNumberSInt32Type, bits(-1)}, "-1", "FFFFFFFF"},
      {{kCFNumberIntType, 10}, "10", "A"},
      {{kCFNumberLongType, 0x7FFFFFFF}, "2147483647", "7FFFFFFF"},
      {{kCFNumberLongLongType, 0x0011223344556677}, "4822678189205111", "7766554433221100"},
      {{kCFNumberSInt64Type, 1ULL << 63}, "-9223372036854775808", "0000000000000080"},
      {{kCFNumberFloat32Type, float32}, "-0.250000", "-0.250000"},
      {{kCFNumberFloatType, float32}, "-0.250000", "-0.250000"},
      {{kCFNumberFloat64Type, float64}, "2000000000.000000", "2000000000.000000"},
      {{kCFNumberDoubleType, float64}, "2000000000.000000", "2000000000.000000"},
      {{kCFNumberCFIndexType, 7}, "", ""},
      {{15, 7}, "untouched", "untouched"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Converted(c.number, false), c.decimal);
    EXPECT_EQ(Converted(c.number, true), c.hexadecimal);
  }
  EXPECT_EQ(Converted(platform::Float64Number(-DBL_MAX), false).size(), kNumberTextSize - 1U);
}

TEST(DataText, IsEmptyWithoutMemory) {
  const platform::DataObject object({1, 2});
  char text[] = "untouched";
  callsFail = true;
  ConvertCFDataToCStr(static_cast<CFDataRef>(platform::Ref(&object)), text);
  callsFail = false;
  EXPECT_STREQ(text, "");
  StripAllSpaces(nullptr);
}

TEST(ReverseBytes, OnlyTheThreeSizesAndOnlyWhereItMatters) {
  for (const auto& [size, reversed] : {std::pair{2U, "bacdefgh"},
                                       {4U, "dcbaefgh"},
                                       {8U, "hgfedcba"},
                                       {3U, "abcdefgh"},
                                       {16U, "abcdefgh"}}) {
    std::string field = "abcdefgh";
    bLittleEndianCPU = false;
    ReverseBytesCheck(field.data(), size);
    EXPECT_EQ(field, "abcdefgh");
    bLittleEndianCPU = true;
    ReverseBytesCheck(field.data(), size);
    EXPECT_EQ(field, reversed);
  }
}
