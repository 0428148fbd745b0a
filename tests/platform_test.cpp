// Where the platform layer is meant to be unkind: what a failed call leaves
// behind, which conversions survive, and which misuse stops the program.
#include <Carbon/Carbon.h>
#include <IOKit/storage/ata/ATASMARTLib.h>

#include <cmath>
#include <cstring>

#include "platform/objects.h"
#include "tests/support.h"

namespace {

template <typename T>
std::pair<bool, T> Fetched(platform::Number number, CFNumberType type) {
  const platform::NumberObject object(number);
  T value{};
  const bool survives =
      CFNumberGetValue(static_cast<CFNumberRef>(platform::Ref(&object)), type, &value) != 0;
  return {survives, value};
}

}  // namespace

TEST(Numbers, ConvertWhereTheValueSurvives) {
  const auto integer = [](std::int64_t v) { return platform::IntegerNumber(v); };
  const auto real = [](double v) { return platform::Float64Number(v); };
  using Int32 = std::pair<bool, SInt32>;
  using Float = std::pair<bool, double>;
  EXPECT_EQ(Fetched<SInt32>(real(1.5), kCFNumberLongType), Int32(false, 1));
  EXPECT_EQ(Fetched<SInt32>(real(1e300), kCFNumberSInt32Type), Int32(false, INT32_MAX));
  EXPECT_EQ(Fetched<SInt32>(real(NAN), kCFNumberIntType), Int32(false, 0));
  EXPECT_EQ(Fetched<SInt32>(integer(1LL << 32), kCFNumberLongType), Int32(false, 0));
  EXPECT_TRUE(Fetched<SInt64>(real(-0x1p63), kCFNumberSInt64Type).first);
  EXPECT_FALSE(Fetched<SInt64>(real(0x1p63), kCFNumberSInt64Type).first);
  EXPECT_EQ(Fetched<double>(integer((1LL << 53) + 1), kCFNumberDoubleType), Float(false, 0x1p53));
  EXPECT_TRUE(Fetched<double>(integer(1LL << 53), kCFNumberDoubleType).first);
  EXPECT_FALSE(Fetched<double>(integer(INT64_MAX), kCFNumberDoubleType).first);
  EXPECT_EQ(Fetched<float>(real(0.1), kCFNumberFloat32Type), std::pair(false, 0.1F));
  EXPECT_EQ(Fetched<SInt8>(integer(200), kCFNumberCharType), std::pair(false, SInt8{-56}));
  EXPECT_EQ(Fetched<SInt32>({0, 5}, kCFNumberLongType), Int32(false, 0));
  EXPECT_EQ(Fetched<SInt32>(integer(5), 15), Int32(false, 0));
}

TEST(Platform, FailedCallsLeaveWhatTheyMay) {
  char buffer[8];
  EXPECT_TRUE(CFStringGetCString(CFSTR("1234567"), buffer, 8, kCFStringEncodingASCII));
  EXPECT_FALSE(CFStringGetCString(CFSTR("abc\xC3\xA9"), buffer, 8, kCFStringEncodingASCII));
  EXPECT_EQ(std::memcmp(buffer, "abc\xA5\xA5\xA5\xA5\xA5", 8), 0) << "partial text, no NUL";
  EXPECT_FALSE(CFStringGetCString(CFSTR("12345678"), buffer, 8, kCFStringEncodingASCII));
  EXPECT_EQ(std::memchr(buffer, 0, 8), nullptr);

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
  const auto create = [&](CFUUIDRef type) {
    return IOCreatePlugInInterfaceForService(service, type, kIOCFPlugInInterfaceID, &plugIn,
                                             &score);
  };
  EXPECT_NE(create(kIOATASMARTInterfaceID), kIOReturnSuccess);
  ASSERT_EQ(create(kIOATASMARTUserClientTypeID), kIOReturnSuccess);
  LPVOID smart = nullptr;
  const auto query = [&](CFUUIDRef interface) {
    return (*plugIn)->QueryInterface(plugIn, CFUUIDGetUUIDBytes(interface), &smart);
  };
  EXPECT_NE(query(kIOCFPlugInInterfaceID), S_OK);
  ASSERT_EQ(query(kIOATASMARTInterfaceID), S_OK);
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
  test::Install({{"Drive", "", {{"K", test::Text("v")}}, {}, {}}});
  const io_service_t service = test::ServiceNamed("Drive");
  const CFTypeRef found =
      IORegistryEntrySearchCFProperty(service, kIOServicePlane, CFSTR("K"), kCFAllocatorDefault, 0);
  EXPECT_DEATH(CFRelease(CFSTR("constant")), "CFRelease: the caller owns no reference");
  EXPECT_DEATH((CFRelease(found), CFRelease(found)), "owns no reference");
  EXPECT_DEATH(CFNumberGetType(static_cast<CFNumberRef>(found)), "of another type");
  EXPECT_DEATH((IOObjectRelease(service), IOObjectRelease(service)), "null or dead");
  EXPECT_DEATH(IOIteratorNext(service), "of another kind");
  EXPECT_DEATH(IODestroyPlugInInterface(nullptr), "null or dead");
  EXPECT_DEATH(DisposePtr(nullptr), "null or disposed of");
  CFRelease(found);
}
