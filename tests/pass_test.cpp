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
using test::HealthyDrive;
using test::Install;
using test::Report;

namespace {
// A service, or 0 for a plug-in, and how many of what goes before it are left.
std::vector<std::pair<io_object_t, int>> releases;
}  // namespace

// The linker sends the probe's calls here first.
extern "C" {

kern_return_t __real_IODestroyPlugInInterface(IOCFPlugInInterface** interface);
kern_return_t __wrap_IODestroyPlugInInterface(IOCFPlugInInterface** interface) {
  releases.emplace_back(0, OpenReferences().smartInterfaces);
  return __real_IODestroyPlugInInterface(interface);
}

kern_return_t __real_IOObjectRelease(io_object_t object);
kern_return_t __wrap_IOObjectRelease(io_object_t object) {
  releases.emplace_back(object, OpenReferences().plugIns);
  return __real_IOObjectRelease(object);
}

}  // extern "C"

TEST(Pass, VersionDecidesWhatIsReadAndPrinted) {
  const struct {
    SInt32 version;
    const char* calls;
    const char* capacity;
  } cases[] = {{0x101F, "", ""},
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
    test::DeviceLines lines{.path = "/dev/rdisk0", .capacity = c.capacity};
    if (c.version < 0x1030) lines.revision = lines.serial = "";
    EXPECT_EQ(Report(), c.version < 0x1020 ? "" : lines.Text());
    EXPECT_EQ(drive->calls, c.calls);
    EXPECT_EQ(OpenReferences() == before, c.version < 0x1020);
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
  Entry onlyOfClass = AtaDevice(HealthyDrive());
  onlyOfClass.name = "Disk";
  Entry onlyNamed = AhciDevice(HealthyDrive());
  onlyNamed.className = "Disk";
  Install({onlyOfClass, onlyNamed, withFeatures(test::Integer(0x5F)),
           withFeatures(test::Integer(1LL << 32 | 0x20)),
           withFeatures({platform::Float64Number(32.5)}), withFeatures(test::Text("32")), onlyAbove,
           noDictionary});
  EXPECT_EQ(Report(), "");

  Entry bare{"Port 0", "IOAHCIBlockStorageDevice", {}, {}, HealthyDrive()};
  Entry named = AtaDevice(HealthyDrive());
  named.className = "Disk";
  Install({withFeatures(test::Integer(0x21)), withFeatures({platform::Float64Number(32)}),
           withFeatures(test::Integer(-1)), bare, named});
  Report();
  EXPECT_EQ(gSMARTDriveCount, 5) << "AHCI goes by class and unfiltered, ATA by name";
}

TEST(Pass, TextsOfTheRegistryReplaceTheDrivesOwn) {
  const platform::KeyedProperty serial = {"Serial Number", test::Text("123456789012345678901")};
  const platform::KeyedProperty revision = {"Revision", test::Text("1.0")};
  const platform::KeyedProperty longRevision = {"Revision", test::Text("12345678X")};
  Install({{"", "", {serial, revision}, {AtaDevice(HealthyDrive())}, {}},
           {"", "", {longRevision}, {AtaDevice(HealthyDrive())}, {}}});
  const test::DeviceLines both{
      .path = "/dev/rdisk0", .revision = "1.0", .serial = "12345678901234567890"};
  const test::DeviceLines one{.path = "/dev/rdisk0", .revision = "12345678"};
  EXPECT_EQ(Report(), both.Text() + one.Text());
}

TEST(Pass, ReleasesWhatCountedDrivesHoldInOrder) {
  Install({AtaDevice(HealthyDrive()), AhciDevice(HealthyDrive()), AtaDevice(HealthyDrive()),
           AtaDevice(nullptr)});
  Report();  // start-up, for the table
  const Ledger before = OpenReferences();
  testing::internal::CaptureStdout();
  FindAllSMARTConnections();
  EXPECT_EQ(OpenReferences() - before, (Ledger{.propertyDictionaries = 3,
                                               .iterators = 2,
                                               .services = 4,
                                               .plugIns = 3,
                                               .smartInterfaces = 3}));

  const Ledger beforePass = OpenReferences();
  releases.clear();
  SMARTPollingRoutine(nullptr, nullptr);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(OpenReferences() - beforePass,
            (Ledger{.propertyDictionaries = 3, .iterators = 2, .services = 1}));
  ASSERT_EQ(releases.size(), 6U);
  auto next = releases.begin();
  for (int i = 0; i < 3; i++) {
    EXPECT_EQ(*next++, std::pair(0U, beforePass.smartInterfaces + 2 - i));
    EXPECT_EQ(*next++, std::pair(gSavedATADriveInfoArray[i].service, beforePass.plugIns + 2 - i));
  }
}

TEST(Pass, TheTableEndsWith64Drives) {
  std::vector<Entry> devices;
  std::string expected;
  for (int i = 0; i < 66; i++) {
    devices.push_back(AtaDevice(HealthyDrive(), "disk" + std::to_string(i)));
    if (i < 64) expected += test::DeviceLines{.path = "/dev/rdisk" + std::to_string(i)}.Text();
  }
  devices.push_back(AtaDevice(nullptr, "disk66"));
  devices.push_back(AhciDevice(HealthyDrive(), "disk67"));
  Install(std::move(devices));
  const Ledger before = OpenReferences();
  EXPECT_EQ(Report(), expected);
  EXPECT_EQ(OpenReferences() - before,
            (Ledger{.propertyDictionaries = 64, .iterators = 2, .services = 4, .memoryBlocks = 1}));
}
