// Where the platform layer is meant to be unkind: what a failed call leaves in its
// output, and which misuse stops the program.
#include <Carbon/Carbon.h>
#include <IOKit/storage/ata/ATASMARTLib.h>

#include <cstring>

#include "platform/objects.h"
#include "tests/support.h"

TEST(Platform, AFailedConversionLeavesPartOfTheTextAndNoNUL) {
  char buffer[8];
  EXPECT_FALSE(CFStringGetCString(CFSTR("abc\xC3\xA9"), buffer, 8, kCFStringEncodingASCII));
  EXPECT_EQ(std::memcmp(buffer, "abc\xA5\xA5\xA5\xA5\xA5", 8), 0);
  EXPECT_FALSE(CFStringGetCString(CFSTR("12345678"), buffer, 8, kCFStringEncodingASCII));
  EXPECT_EQ(std::memchr(buffer, 0, 8), nullptr);
}

IOCFPlugInInterface** OpenPlugIn(io_service_t service) {
  SInt32 score = 0;
  IOCFPlugInInterface** plugIn = nullptr;
  IOCreatePlugInInterfaceForService(service, kIOATASMARTUserClientTypeID, kIOCFPlugInInterfaceID,
                                    &plugIn, &score);
  return plugIn;
}

TEST(PlatformDeathTest, MisuseFailsOrStopsTheProgram) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  test::Install({{"Drive", "", {{"K", test::Text("v")}}, {}, test::HealthyDrive()}});
  const io_service_t service = test::ServiceNamed("Drive");
  const CFTypeRef found =
      IORegistryEntrySearchCFProperty(service, kIOServicePlane, CFSTR("K"), kCFAllocatorDefault, 0);
  EXPECT_DEATH(CFRelease(CFSTR("constant")), "CFRelease: the caller owns no reference");
  EXPECT_DEATH((CFRelease(found), CFRelease(found)), "owns no reference");
  EXPECT_DEATH(CFNumberGetType(static_cast<CFNumberRef>(found)), "of another type");
  EXPECT_DEATH((IOObjectRelease(service), IOObjectRelease(service)), "null or dead");
  EXPECT_DEATH(IOIteratorNext(service), "of another kind");
  EXPECT_DEATH(DisposePtr(nullptr), "null or disposed of");
  EXPECT_EQ(test::ServiceNamed("None"), 0U) << "no match is no failure";
  EXPECT_DEATH(IOObjectRelease(0), "null or dead");
  IOCFPlugInInterface** const plugIn = OpenPlugIn(service);
  EXPECT_EQ(OpenPlugIn(service), nullptr) << "a device has one client at a time";
  void* queried = nullptr;
  (*plugIn)->QueryInterface(plugIn, CFUUIDGetUUIDBytes(kIOATASMARTInterfaceID), &queried);
  auto** const smart = static_cast<IOATASMARTInterface**>(queried);
  UInt32 written = 0;
  EXPECT_NE((*smart)->GetATAIdentifyData(smart, nullptr, 513, &written), 0) << "it is smaller";
  (*smart)->SMARTEnableDisableOperations(smart, 2);
  EXPECT_NE((*smart)->SMARTReadData(smart, nullptr), 0) << "all but 1 disables";
  const auto release = (*smart)->Release;
  EXPECT_DEATH((IODestroyPlugInInterface(plugIn), release(smart)), "null or dead");
}
