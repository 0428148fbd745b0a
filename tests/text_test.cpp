// Byte counts, numbers and data as text, and the tidying of texts and fields.
#include <Carbon/Carbon.h>

#include <cfloat>
#include <cstring>
#include <limits>

#include "platform/objects.h"
#include "probe/start_up.h"
#include "tests/support.h"
#include "text/byte_count_labels.h"
#include "text/value_to_text.h"

using platform::Ledger;
using platform::Number;
using platform::OpenReferences;

namespace {

bool lookupsFail = false;
bool memoryIsOut = false;

std::string Label(SInt64 count, SInt32 version, bool fullNames) {
  gMySysVersion = version;
  const std::size_t size = fullNames ? 266 : 12;  // the most that is written
  const auto text = std::make_unique<char[]>(size);
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

std::string Hex(const platform::Data& bytes) {
  const platform::DataObject object(bytes);
  const auto text = std::make_unique<char[]>(2 * bytes.size() + 1);
  ConvertCFDataToCStr(static_cast<CFDataRef>(platform::Ref(&object)), text.get());
  return text.get();
}

template <void (*strip)(char*)>
std::string Stripped(std::string text) {
  strip(text.data());
  text.resize(std::strlen(text.data()));
  return text;
}

}  // namespace

// The linker sends the probe's calls here first.
extern "C" {

CFStringRef __real_CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key,
                                               CFStringRef value, CFStringRef table);
CFStringRef __wrap_CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key,
                                               CFStringRef value, CFStringRef table) {
  return lookupsFail ? nullptr : __real_CFBundleCopyLocalizedString(bundle, key, value, table);
}

Ptr __real_NewPtr(Size byteCount);
Ptr __wrap_NewPtr(Size byteCount) { return memoryIsOut ? nullptr : __real_NewPtr(byteCount); }

}  // extern "C"

TEST(Labels, AllColumns) {
  const SInt64 kMost = std::numeric_limits<SInt64>::max();
  const SInt64 kLeast = std::numeric_limits<SInt64>::min();
  const struct {
    SInt64 count;
    const char* decimal;
    const char* decimalFull;
    const char* binary;
    const char* binaryFull;
  } cases[] = {
      {0, "0 B", "0 Bytes", "0 B", "0 Bytes"},
      {512, "512 B", "512 Bytes", "512 B", "512 Bytes"},
      {999, "999 B", "999 Bytes", "999 B", "999 Bytes"},
      {1000, "1.00 KB", "1 Kilobytes", "1000 B", "1000 Bytes"},
      {1023, "1.02 KB", "1.023 Kilobytes", "1023 B", "1023 Bytes"},
      {1024, "1.02 KB", "1.024 Kilobytes", "1.00 KB", "1 Kilobytes"},
      {1065, "1.07 KB", "1.065 Kilobytes", "1.04 KB", "1.040 Kilobytes"},
      {1152, "1.15 KB", "1.152 Kilobytes", "1.12 KB", "1.125 Kilobytes"},
      {1536, "1.54 KB", "1.536 Kilobytes", "1.50 KB", "1.500 Kilobytes"},
      {2047, "2.05 KB", "2.047 Kilobytes", "2.00 KB", "1.999 Kilobytes"},
      {999999, "1000.00 KB", "999.999 Kilobytes", "976.56 KB", "976.562 Kilobytes"},
      {1048575, "1.05 MB", "1.048 Megabytes", "1024.00 KB", "1023.999 Kilobytes"},
      {1048576, "1.05 MB", "1.048 Megabytes", "1.00 MB", "1 Megabytes"},
      {1048577, "1.05 MB", "1.048 Megabytes", "1.00 MB", "1 Megabytes"},
      {1000000000, "1.00 GB", "1 Gigabytes", "953.67 MB", "953.674 Megabytes"},
      {250059350016, "250.06 GB", "250.059 Gigabytes", "232.89 GB", "232.886 Gigabytes"},
      {500107862016, "500.11 GB", "500.107 Gigabytes", "465.76 GB", "465.762 Gigabytes"},
      {1000204886016, "1.00 TB", "1 Terabytes", "931.51 GB", "931.513 Gigabytes"},
      {2000398934016, "2.00 TB", "2 Terabytes", "1.82 TB", "1.819 Terabytes"},
      {3000000000000000, "3.00 PB", "3 PetaBytes", "2.66 PB", "2.664 PetaBytes"},
      {kMost, "9.22 EB", "9.223 ExaBytes", "8.00 EB", "7.999 ExaBytes"},
      {-1, "-1 B", "-1 Bytes", "-1 B", "-1 Bytes"},
      {-1536, "-1.54 KB", "-1.536 Kilobytes", "-1.50 KB", "-1.500 Kilobytes"},
      {kLeast, "-9.22 EB", "-9.223 ExaBytes", "-8.00 EB", "-7.999 ExaBytes"},
  };
  const Ledger before = OpenReferences();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.count);
    EXPECT_EQ(Label(c.count, 0x1060, false), c.decimal);
    EXPECT_EQ(Label(c.count, 0x1060, true), c.decimalFull);
    EXPECT_EQ(Label(c.count, 0x105F, false), c.binary);
    EXPECT_EQ(Label(c.count, 0x105F, true), c.binaryFull);
  }
  EXPECT_EQ(OpenReferences() - before, Ledger{});
}

TEST(Labels, FullNamesCanBeTranslatedOrMissing) {
  const Ledger before = OpenReferences();
  auto& strings = test::Install({}).mainBundleStrings;
  strings = {{"Gigabytes", "Gigaoctets\xC3\xA9"},
             {"Megabytes", std::string(255, 'm')},
             {"Kilobytes", std::string(256, 'k')}};
  EXPECT_EQ(Label(-250059350016, 0x1060, true), "-250.059 Gigaoctets\xC3\xA9");
  EXPECT_EQ(Label(-1023999999, 0x1058, true), "-976.562 " + std::string(255, 'm'));
  EXPECT_EQ(Label(1025, 0x1058, true), "untouched");
  lookupsFail = true;
  EXPECT_EQ(Label(5, 0x1060, true), "untouched");
  lookupsFail = false;
  EXPECT_EQ(OpenReferences() - before, Ledger{});
}

TEST(NumberText, EachTypeInBothModes) {
  const auto bits = [](std::int64_t value) { return static_cast<std::uint64_t>(value); };
  const struct {
    Number number;
    const char* decimal;
    const char* hexadecimal;
  } cases[] = {
      {{0, 5}, "untouched", "untouched"},
      {{kCFNumberSInt8Type, 65}, "A", "41"},
      {{kCFNumberCharType, bits(-1)}, "\xFF", "FF"},
      {{kCFNumberSInt8Type, 0}, "", "0"},
      {{kCFNumberSInt16Type, bits(-1)}, "-1", "FFFF"},
      {{kCFNumberShortType, 10}, "10", "A"},
      {{kCFNumberSInt32Type, bits(-1)}, "-1", "FFFFFFFF"},
      {{kCFNumberIntType, 10}, "10", "A"},
      {{kCFNumberLongType, 0x7FFFFFFF}, "2147483647", "7FFFFFFF"},
      {{kCFNumberSInt64Type, 1}, "1", "0100000000000000"},
      {{kCFNumberLongLongType, 0x0011223344556677}, "4822678189205111", "7766554433221100"},
      {{kCFNumberSInt64Type, 1ULL << 63}, "-9223372036854775808", "0000000000000080"},
      {platform::Float32Number(1.5F), "1.500000", "1.500000"},
      {{kCFNumberFloatType, platform::Float32Number(-0.25F).bits}, "-0.250000", "-0.250000"},
      {platform::Float64Number(1.5), "1.500000", "1.500000"},
      {{kCFNumberDoubleType, platform::Float64Number(1e15).bits},
       "1000000000000000.000000",
       "1000000000000000.000000"},
      {{kCFNumberCFIndexType, 7}, "", ""},
      {{15, 7}, "untouched", "untouched"},
      {{-1, 7}, "untouched", "untouched"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Converted(c.number, false), c.decimal);
    EXPECT_EQ(Converted(c.number, true), c.hexadecimal);
  }
  EXPECT_EQ(Converted(platform::Float64Number(-DBL_MAX), false).size(), kNumberTextSize - 1U);
}

TEST(DataText, IsTwoDigitsAByte) {
  const Ledger before = OpenReferences();
  EXPECT_EQ(Hex({}), "");
  EXPECT_EQ(Hex({0x00, 0x0A, 0xF0, 0xFF}), "000AF0FF");
  memoryIsOut = true;
  EXPECT_EQ(Hex({1, 2}), "");
  memoryIsOut = false;
  EXPECT_EQ(OpenReferences() - before, Ledger{});
}

TEST(Strip, TakesOnlyWhatItIsNamedFor) {
  EXPECT_EQ(Stripped<StripLeadingZeros>("000"), "");
  EXPECT_EQ(Stripped<StripLeadingZeros>("0A0"), "A0");
  EXPECT_EQ(Stripped<StripLeadingZeros>(" 0"), " 0");
  EXPECT_EQ(Stripped<StripLeadingSpaces>("  a "), "a ");
  EXPECT_EQ(Stripped<StripAllSpaces>("  a b \t  "), "a b \t");
  EXPECT_EQ(Stripped<StripAllSpaces>("   "), "");
  EXPECT_EQ(Stripped<StripAllSpaces>(""), "");
  StripAllSpaces(nullptr);
  StripLeadingZeros(nullptr);
}

TEST(ReverseBytes, OnlyTheThreeSizesAndOnlyWhereItMatters) {
  const struct {
    UInt32 size;
    bool littleEndian;
    const char* bytes;
  } cases[] = {{2, true, "bacdefgh"},  {4, true, "dcbaefgh"}, {8, true, "hgfedcba"},
               {3, true, "abcdefgh"},  {0, true, "abcdefgh"}, {16, true, "abcdefgh"},
               {2, false, "abcdefgh"}, {8, false, "abcdefgh"}};
  for (const auto& c : cases) {
    bLittleEndianCPU = c.littleEndian;
    std::string field = "abcdefgh";
    ReverseBytesCheck(field.data(), c.size);
    EXPECT_EQ(field, c.bytes);
  }
}
