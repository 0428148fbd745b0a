// Byte counts and numbers as text, and the tidying of texts and fields.
#include <array>
#include <cfloat>
#include <cstring>

#include "platform/objects.h"
#include "probe/state/process_state.h"
#include "probe/text/byte_count_labels.h"
#include "probe/text/value_to_text.h"
#include "tests/support.h"

using platform::Number;

namespace {

std::string Label(SInt64 count, SInt32 version, bool fullNames) {
  gMySysVersion = version;
  const auto text = std::make_unique<char[]>(fullNames ? 266 : 12);  // the most that is written
  std::strcpy(text.get(), "untouched");
  BytesSInt64ToCStrWLabel(count, text.get(), fullNames);
  return text.get();
}

std::string Converted(Number number, bool hexadecimal) {
  const platform::ValueObject object(&number);
  const auto text = std::make_unique<char[]>(kNumberTextSize);
  std::strcpy(text.get(), "untouched");
  ConvertCFNumberToCStr(static_cast<CFNumberRef>(platform::Ref(&object)), text.get(), hexadecimal);
  return text.get();
}

}  // namespace

TEST(Labels, AllColumns) {
  const std::string m255(255, 'm');
  platform::ThisMachine().mainBundleStrings = {{"Gigabytes", "Gigaoctets\xC3\xA9"},
                                               {"Megabytes", m255},
                                               {"Terabytes", std::string(256, 't')}};
  // Decimal, with full names, binary, with full names.
  const std::pair<SInt64, std::array<std::string, 4>> cases[] = {
      {0, {"0 B", "0 Bytes", "0 B", "0 Bytes"}},
      {1000, {"1.00 KB", "1 Kilobytes", "1000 B", "1000 Bytes"}},
      {1023, {"1.02 KB", "1.023 Kilobytes", "1023 B", "1023 Bytes"}},
      {1048575, {"1.05 MB", "1.048 " + m255, "1024.00 KB", "1023.999 Kilobytes"}},
      {1048577, {"1.05 MB", "1.048 " + m255, "1.00 MB", "1 " + m255}},
      {-1023999999, {"-1.02 GB", "-1.023 Gigaoctets\xC3\xA9", "-976.56 MB", "-976.562 " + m255}},
      {1000204886016, {"1.00 TB", "untouched", "931.51 GB", "931.513 Gigaoctets\xC3\xA9"}},
      {3000000000000000, {"3.00 PB", "3 PetaBytes", "2.66 PB", "2.664 PetaBytes"}},
      {5000000000, {"5.00 GB", "5 Gigaoctets\xC3\xA9", "4.66 GB", "4.656 Gigaoctets\xC3\xA9"}},
      {-1, {"-1 B", "-1 Bytes", "-1 B", "-1 Bytes"}},
      {INT64_MIN, {"-9.22 EB", "-9.223 ExaBytes", "-8.00 EB", "-7.999 ExaBytes"}},
  };
  for (const auto& [count, labels] : cases) {
    for (std::size_t i = 0; i < 4; i++) {
      EXPECT_EQ(Label(count, i < 2 ? 0x1060 : 0x105F, i % 2 == 1), labels[i]);
    }
  }
  EXPECT_EQ(platform::OpenReferences(), platform::Ledger());
}

TEST(NumberText, EachTypeInBothModes) {
  const auto bits = [](std::int64_t value) { return static_cast<std::uint64_t>(value); };
  const std::tuple<Number, const char*, const char*> cases[] = {
      {{kCFNumberSInt8Type, bits(-1)}, "\xFF", "FF"},
      {{kCFNumberSInt16Type, bits(-1)}, "-1", "FFFF"},
      {{kCFNumberSInt32Type, bits(-1)}, "-1", "FFFFFFFF"},
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
