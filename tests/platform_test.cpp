// Where the platform layer is meant to be unkind: what a failed call leaves
// behind, which conversions survive, and which misuse stops the program.
#include <Carbon/Carbon.h>
#include <IOKit/storage/ata/ATASMARTLib.h>

#include <cstring>
#include <limits>

#include "platform/objects.h"
#include "tests/support.h"

using platform::Number;

namespace {

template <typename T>
std::pair<bool, T> Fetched(Number number, CFNumberType type) {
  const platform::NumberObject object(number);
  T value{};
  const bool survives =
      CFNumberGetValue(static_cast<CFNumberRef>(platform::Ref(&object)), type, &value) != 0;
  return {survives, value};
}

CFTypeRef FoundValue() {
  test::Install({{"Drive", "", {{"K", test::Text("v")}}, {}, {}}});
  return IORegistryEntrySearchCFProperty(test::ServiceNamed("Drive"), kIOServicePlane, CFSTR("K"),
                                         kCFAllocatorDefault, 0);
}

}  // namespace

TEST(Numbers, ConvertWhereTheValueSurvives) {
  using test::Real;
  const auto integer = [](std::int64_t v) { return platform::IntegerNumber(v); };
  const auto real = [](double v) { return platform::Float64Number(v); };
  using Int32 = std::pair<bool, SInt32>;
  EXPECT_EQ(Fetched<SInt32>(real(32.0), kCFNumberLongType), Int32(true, 32));
  EXPECT_EQ(Fetched<SInt32>(real(1.5), kCFNumberLongType), Int32(false, 1));
  EXPECT_EQ(Fetched<SInt32>(real(1e300), kCFNumberSInt32Type),
            Int32(false, std::numeric_limits<SInt32>::max()));
  EXPECT_EQ(Fetched<SInt32>(real(std::numeric_limits<double>::quiet_NaN()), kCFNumberIntType),
            Int32(false, 0));
  EXPECT_EQ(Fetched<SInt32>(integer(1LL << 32), kCFNumberLongType), Int32(false, 0));
  EXPECT_EQ(Fetched<SInt32>(integer(-5), kCFNumberLongType), Int32(true, -5));
  EXPECT_EQ(Fetched<SInt64>(real(-0x1p63), kCFNumberSInt64Type),
            std::pair(true, std::numeric_limits<SInt64>::min()));
  EXPECT_FALSE(Fetched<SInt64>(real(0x1p63), kCFNumberSInt64Type).first);
  EXPECT_EQ(Fetched<double>(integer((1LL << 53) + 1), kCFNumberDoubleType),
            std::pair(false, 0x1p53));
  EXPECT_EQ(Fetched<double>(integer(1LL << 53), kCFNumberDoubleType), std::pair(true, 0x1p53));
  EXPECT_FALSE(
      Fetched<double>(integer(std::numeric_limits<SInt64>::max()), kCFNumberDoubleType).first);
  EXPECT_EQ(Fetched<float>(real(0.1), kCFNumberFloat32Type), std::pair(false, 0.1F));
  EXPECT_EQ(Fetched<SInt8>(integer(200), kCFNumberCharType), std::pair(false, SInt8{-56}));
  EXPECT_EQ(Fetched<SInt32>({0, 5}, kCFNumberLongType), Int32(false, 0));
  EXPECT_EQ(Fetched<SInt32>(integer(5), 15), Int32(false, 0));
}

TEST(Platform, FailedCallsLeaveWhatTheyMay) {
  const CFTypeRef text = FoundValue();
  char buffer[8] = "before";
  EXPECT_TRUE(CFStringGetCString(CFSTR("1234567"), buffer, 8, kCFStringEncodingASCII));
  EXPECT_STREQ(buffer, "1234567");
  EXPECT_FALSE(CFStringGetCString(CFSTR("abc\xC3\xA9"), buffer, 8, kCFStringEncodingASCII));
  EXPECT_EQ(std::memcmp(buffer, "abc\xA5\xA5\xA5\xA5\xA5", 8), 0) << "partial text, no NUL";
  EXPECT_FALSE(CFStringGetCString(CFSTR("12345678"), buffer, 8, kCFStringEncodingASCII));
  EXPECT_EQ(std::memchr(buffer, 0, 8), nullptr);
  EXPECT_TRUE(CFStringGetCString(CFSTR("\xC3\xA9"), buffer, 8, GetApplicationTextEncoding()));
  CFRelease(text);

  Ptr block = NewPtr(3);
  EXPECT_EQ(std::memcmp(block, "\xA5\xA5\xA5", 3), 0);
  DisposePtr(block);
  EXPECT_EQ(NewPtr(-1), nullptr);

  SInt32 version = 7;
  EXPECT_NE(Gestalt(0, &version), 0);
  EXPECT_EQ(version, 7);
}

TEST(Platform, OnlyTheUserClientOfADriveCanBeOpened) {
  auto drive = test::HealthyDrive();
  test::Install({test::AtaDevice(drive)});
  const io_service_t service = test::ServiceNamed("IOATABlockStorageDevice");
  IOCFPlugInInterface** plugIn = nullptr;
  SInt32 score = 0;
  EXPECT_NE(IOCreatePlugInInterfaceForService(service, kIOATASMARTInterfaceID,
                                              kIOCFPlugInInterfaceID, &plugIn, &score),
            kIOReturnSuccess);
  EXPECT_EQ(plugIn, nullptr);
  ASSERT_EQ(IOCreatePlugInInterfaceForService(service, kIOATASMARTUserClientTypeID,
                                              kIOCFPlugInInterfaceID, &plugIn, &score),
            kIOReturnSuccess);
  LPVOID smart = nullptr;
  EXPECT_NE((*plugIn)->QueryInterface(plugIn, CFUUIDGetUUIDBytes(kIOCFPlugInInterfaceID), &smart),
            S_OK);
  EXPECT_EQ(smart, nullptr);
  ASSERT_EQ((*plugIn)->QueryInterface(plugIn, CFUUIDGetUUIDBytes(kIOATASMARTInterfaceID), &smart),
            S_OK);
  IODestroyPlugInInterface(plugIn);
  EXPECT_EQ(drive->calls, "O") << "the interface still uses the drive";
  auto** interface = static_cast<IOATASMARTInterface**>(smart);
  UInt8 small[4] = {};
  UInt32 size = 0;
  EXPECT_EQ((*interface)->GetATAIdentifyData(interface, small, 4, &size), kIOReturnSuccess);
  EXPECT_EQ(size, 4U);
  (*interface)->AddRef(interface);
  (*interface)->Release(interface);
  (*interface)->Release(interface);
  EXPECT_EQ(drive->calls, "OIC");
  IOObjectRelease(service);
}

TEST(PlatformDeathTest, MisuseStopsTheProgram) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const CFTypeRef found = FoundValue();
  EXPECT_DEATH(CFRelease(nullptr), "CFRelease: the caller owns no reference");
  EXPECT_DEATH(CFRelease(CFSTR("constant")), "owns no reference");
  EXPECT_DEATH((CFRelease(found), CFRelease(found)), "owns no reference");
  EXPECT_DEATH(CFNumberGetType(static_cast<CFNumberRef>(found)), "of another type");
  EXPECT_DEATH(IOObjectRelease(0), "null or dead");
  const io_service_t service = test::ServiceNamed("Drive");
  EXPECT_DEATH((IOObjectRelease(service), IOObjectRelease(service)), "null or dead");
  EXPECT_DEATH(IOIteratorNext(service), "of another kind");
  EXPECT_DEATH(IODestroyPlugInInterface(nullptr), "null or dead");
  EXPECT_DEATH(DisposePtr(nullptr), "null or disposed of");
  CFRelease(found);
}
