// The pass as a whole: what is printed for which drive, what is called on it, and
// what is released.
#include <IOKit/IOCFPlugIn.h>

#include "platform/ledger.h"
#include "probe/discovery.h"
#include "probe/drive_table.h"
#include "probe/start_up.h"
#include "tests/support.h"

using platform::Entry;
using platform::Ledger;
using platform::OpenReferences;
using test::AhciDevice;
using test::AtaDevice;
using test::FakeDrive;
using test::HealthyDrive;
using test::Install;
using test::Report;

namespace {

std::vector<std::string> releases;

std::string Lines(const std::string& device, const std::string& capacity = "") {
  return "SmartDeviceStart:::" + device + ":::EXAMPLE 250:::REV     :::" + capacity +
         ":::SERIAL              \nSMARTStatus:::194:::Temperature:::8704:::38:::"
         "Always Passing:::Life-Span:OK\nSmartDeviceEnd:::" +
         device + ":::False\n";
}

}  // namespace

// The linker sends the probe's calls here first.
extern "C" {

kern_return_t __real_IODestroyPlugInInterface(IOCFPlugInInterface** interface);
kern_return_t __wrap_IODestroyPlugInInterface(IOCFPlugInInterface** interface) {
  releases.push_back("plug-in, interfaces left: " +
                     std::to_string(OpenReferences().smartInterfaces));
  return __real_IODestroyPlugInInterface(interface);
}

kern_return_t __real_IOObjectRelease(io_object_t object);
kern_return_t __wrap_IOObjectRelease(io_object_t object) {
  releases.push_back("service " + std::to_string(object) +
                     ", plug-ins left: " + std::to_string(OpenReferences().plugIns));
  return __real_IOObjectRelease(object);
}

}  // extern "C"

TEST(Pass, VersionDecidesWhatIsReadAndPrinted) {
  const struct {
    SInt32 version;
    const char* calls;
    const char* capacity;
  } cases[] = {{0, "", nullptr},
               {0x101F, "", nullptr},
               {0x1020, "OESDTC", "232.89 GB"},
               {0x102F, "OESDTC", "232.89 GB"},
               {0x1030, "OESDTIC", "232.89 GB"},
               {0x105F, "OESDTIC", "232.89 GB"},
               {0x1060, "OESDTIC", "250.06 GB"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.version);
    auto drive = HealthyDrive();
    Install({AtaDevice(drive, "disk0", 250059350016)}, c.version);
    const Ledger before = OpenReferences();
    const std::string report = Report();
    EXPECT_EQ(drive->calls, c.calls);
    if (c.capacity == nullptr) {
      EXPECT_EQ(report, "");
      EXPECT_EQ(OpenReferences() - before, Ledger{});
    } else if (c.version < 0x1030) {
      EXPECT_EQ(
          report.substr(0, report.find('\n')),
          std::string("SmartDeviceStart:::/dev/rdisk0:::EXAMPLE 250::::::") + c.capacity + ":::");
    } else {
      EXPECT_EQ(report, Lines("/dev/rdisk0", c.capacity));
    }
  }
}

TEST(Pass, FeatureFilterTurnsAtaDevicesAwayUnseen) {
  const auto withFeatures = [](platform::Property features) {
    Entry device = AtaDevice(HealthyDrive());
    device.properties = {{"Device Characteristics", test::Dict({{"ATA Features", features}})}};
    return device;
  };
  Entry onlyAbove{"Controller", "", AtaDevice(nullptr).properties, {AtaDevice(HealthyDrive())}, {}};
  onlyAbove.children[0].properties.clear();
  Entry noDictionary = AtaDevice(HealthyDrive());
  noDictionary.properties = {{"Device Characteristics", test::Integer(0x20)}};
  Install({withFeatures(test::Integer(0x1F)), withFeatures(test::Integer(1LL << 32 | 0x20)),
           withFeatures(test::Real(32.5)), withFeatures(test::Text("32")), onlyAbove,
           noDictionary});
  EXPECT_EQ(Report(), "");

  Install({withFeatures(test::Integer(0x21)), withFeatures(test::Real(32)),
           withFeatures(test::Integer(-1))});
  Report();
  EXPECT_EQ(gSMARTDriveCount, 3);

  Entry bare = AhciDevice(HealthyDrive());
  bare.properties.clear();
  bare.name = "Port 0";
  Install({bare});
  Report();
  EXPECT_EQ(gSMARTDriveCount, 1) << "an AHCI device is found by its class and not filtered";
}

TEST(Pass, TextsOfTheRegistryReplaceTheDrivesOwn) {
  const struct {
    const char* serial;
    const char* revision;
    const char* line;
  } cases[] = {{"1234567890123456789012345", "12345678X", "12345678::::::12345678901234567890"},
               {"ABCDEF", nullptr, "REV     ::::::ABCDEF"},
               {nullptr, "1.0", "1.0::::::SERIAL              "}};
  for (const auto& c : cases) {
    Entry controller{"Controller", "", {}, {AtaDevice(HealthyDrive())}, {}};
    if (c.serial != nullptr)
      controller.properties.push_back({"Serial Number", test::Text(c.serial)});
    if (c.revision != nullptr)
      controller.properties.push_back({"Revision", test::Text(c.revision)});
    Install({controller});
    const std::string report = Report();
    EXPECT_EQ(report.substr(0, report.find('\n')),
              std::string("SmartDeviceStart:::/dev/rdisk0:::EXAMPLE 250:::") + c.line);
  }
}

TEST(Pass, ReleasesWhatCountedDrivesHoldInOrder) {
  Install({AtaDevice(HealthyDrive()), AhciDevice(HealthyDrive()), AtaDevice(HealthyDrive()),
           AtaDevice(nullptr)});
  Report();  // start-up, for the table
  const Ledger before = OpenReferences();
  testing::internal::CaptureStdout();
  FindAllSMARTConnections();
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(OpenReferences() - before, (Ledger{.propertyDictionaries = 3,
                                               .iterators = 2,
                                               .services = 4,
                                               .plugIns = 3,
                                               .smartInterfaces = 3}));

  const Ledger beforePass = OpenReferences();
  releases.clear();
  testing::internal::CaptureStdout();
  SMARTPollingRoutine(nullptr, nullptr);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(OpenReferences() - beforePass,
            (Ledger{.propertyDictionaries = 3, .iterators = 2, .services = 1}));
  std::vector<std::string> expected;
  for (int i = 0; i < 3; i++) {
    expected.push_back("plug-in, interfaces left: " +
                       std::to_string(beforePass.smartInterfaces + 2 - i));
    expected.push_back("service " + std::to_string(gSavedATADriveInfoArray[i].service) +
                       ", plug-ins left: " + std::to_string(beforePass.plugIns + 2 - i));
  }
  EXPECT_EQ(releases, expected);
}

TEST(Pass, TheTableEndsWith64Drives) {
  std::vector<Entry> devices;
  std::vector<std::shared_ptr<FakeDrive>> drives;
  std::string expected;
  for (int i = 0; i < 66; i++) {
    drives.push_back(HealthyDrive());
    devices.push_back(AtaDevice(drives.back(), "disk" + std::to_string(i)));
    if (i < 64) expected += Lines("/dev/rdisk" + std::to_string(i));
  }
  devices.push_back(AtaDevice(nullptr, "disk66"));
  devices.push_back(AhciDevice(HealthyDrive(), "disk67"));
  Install(std::move(devices));
  const Ledger before = OpenReferences();
  EXPECT_EQ(Report(), expected);
  EXPECT_EQ(drives[63]->calls, "OESDTIC");
  EXPECT_EQ(drives[64]->calls, "");
  EXPECT_EQ(OpenReferences() - before,
            (Ledger{.propertyDictionaries = 64, .iterators = 2, .services = 4, .memoryBlocks = 1}));
}
