// Where the platform layer is meant to be unkind: what a failed call leaves in its
// output, and which misuse stops the program.
#include <Carbon/Carbon.h>

#include <cstring>

#include "platform/objects.h"
#include "tests/support.h"

TEST(Platform, FailedCallsLeaveWhatTheyMay) {
  SInt32 value[2] = {};
  const auto fetches = [&](platform::Number number, CFNumberType type) {
    const platform::NumberObject object(number);
    return CFNumberGetValue(static_cast<CFNumberRef>(platform::Ref(&object)), type, value) != 0;
  };
  EXPECT_FALSE(fetches(platform::Float64Number(1.5), kCFNumberSInt32Type));
  EXPECT_EQ(value[0], 1);
  EXPECT_FALSE(fetches(platform::IntegerNumber((1LL << 32) + 5), kCFNumberSInt32Type));
  EXPECT_EQ(value[0], 5);
  EXPECT_TRUE(fetches(platform::IntegerNumber(-1), kCFNumberLongType));
  EXPECT_EQ(value[1], sizeof(long) == 8 ? -1 : 0) << "as wide as a long";

  char buffer[8];
  EXPECT_TRUE(CFStringGetCString(CFSTR("1234567"), buffer, 8, kCFStringEncodingASCII));
  EXPECT_FALSE(CFStringGetCString(CFSTR("abc\xC3\xA9"), buffer, 8, kCFStringEncodingASCII));
  EXPECT_EQ(std::memcmp(buffer, "abc\xA5\xA5\xA5\xA5\xA5", 8), 0) << "partial text, no NUL";
  EXPECT_FALSE(CFStringGetCString(CFSTR("12345678"), buffer, 8, kCFStringEncodingASCII));
  EXPECT_EQ(std::memchr(buffer, 0, 8), nullptr);

  SInt32 version = 7;
  EXPECT_NE(Gestalt(0, &version), 0);
  EXPECT_EQ(version, 7);
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
  EXPECT_DEATH(DisposePtr(nullptr), "null or disposed of");
}
