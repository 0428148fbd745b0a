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

IOATASMARTInterface** QuerySMART(IOCFPlugInInterface** plugIn) {
  void* smart = nullptr;
  (*plugIn)->QueryInterface(plugIn, CFUUIDGetUUIDBytes(kIOATASMARTInterfaceID), &smart);
  return static_cast<IOATASMARTInterface**>(smart);
}

TEST(Platform, ADeviceHasOneClientAtATimeWhichMayDisableIt) {
  test::Install({{"Drive", "", {}, {}, test::HealthyDrive()}, {"Other", "", {}, {}, {}}});
  const io_service_t service = test::ServiceNamed("Drive");
  IOCFPlugInInterface** const plugIn = OpenPlugIn(service);
  EXPECT_EQ(OpenPlugIn(service), nullptr);
  EXPECT_EQ(OpenPlugIn(test::ServiceNamed("Other")), nullptr);
  void* other = &other;
  EXPECT_NE((*plugIn)->QueryInterface(plugIn, {}, &other), S_OK);
  EXPECT_EQ(other, nullptr);

  IOATASMARTInterface** const smart = QuerySMART(plugIn);
  UInt8 identify[513] = {};
  UInt32 written = 7;
  EXPECT_NE((*smart)->GetATAIdentifyData(smart, identify, 0, &written), 0);
  EXPECT_NE((*smart)->GetATAIdentifyData(smart, identify, 513, &written), 0);
  EXPECT_EQ(written + identify[0], 7U) << "nothing is written";
  EXPECT_EQ((*smart)->GetATAIdentifyData(smart, identify, 512, &written), 0);
  EXPECT_EQ(written + identify[511], 512U + 'x');
  ATASMARTData data;
  for (const int enable : {2, 1, 0}) {
    EXPECT_EQ((*smart)->SMARTEnableDisableOperations(smart, static_cast<Boolean>(enable)), 0);
    EXPECT_EQ((*smart)->SMARTReadData(smart, &data) == 0, enable == 1);
  }
  IODestroyPlugInInterface(plugIn);
  EXPECT_NE(OpenPlugIn(service), nullptr);
}

TEST(PlatformDeathTest, MisuseStopsTheProgram) {
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
  IOATASMARTInterface** const smart = QuerySMART(plugIn);
  const auto release = (*smart)->Release;
  EXPECT_DEATH((IODestroyPlugInInterface(plugIn), release(smart)), "null or dead");
}
