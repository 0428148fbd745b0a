// Every call of a pass that can fail does so once, in one pass after another. Only the
// lines of the device in hand may change, in the way that its failure explains, and only
// what the probe never releases may be left behind.
#include <Carbon/Carbon.h>
#include <IOKit/storage/ata/ATASMARTLib.h>

#include <map>
#include <set>

#include "platform/io_return.h"
#include "platform/objects.h"
#include "platform/process_end.h"
#include "probe/drive_table.h"
#include "tests/support.h"

using platform::Entry;
using test::DeviceLines;

namespace {

constexpr int kAtaDevices = 3;
constexpr int kDevices = 6;

// What is called, for which key of the registry, and for which device.
struct Call {
  std::string name;
  std::string key;
  int device = -1;
};

int callsUntilFailure = 0;
std::map<std::string, int> done;  // how often each call was made and did not fail
Call now, failed;

bool Fails(const char* name, const void* key = nullptr) {
  now.name = name;
  if (key != nullptr) now.key = platform::Deref<platform::StringObject>(key, "test").text;
  if (--callsUntilFailure == 0) failed = now;
  if (callsUntilFailure != 0) done[name]++;
  return callsUntilFailure == 0;
}

struct FaultyDrive : test::FakeDrive {
  bool Fails(char call) override {
    now.key = "";
    return ::Fails(std::string(1, call).c_str());
  }
};

}  // namespace

// The linker sends the probe's calls here first. Behind the arguments stands the key, if any.
#define FAILING(failure, result, call, parameters, arguments, ...)                        \
  result __real_##call parameters;                                                        \
  result __wrap_##call parameters {                                                       \
    return Fails(#call __VA_OPT__(, ) __VA_ARGS__) ? (failure) : __real_##call arguments; \
  }

extern "C" {

FAILING(-1, OSErr, Gestalt, (OSType s, SInt32* r), (s, r))
FAILING(-1, OSStatus, ICStart, (ICInstance * i, OSType s), (i, s))
FAILING(nullptr, Ptr, NewPtr, (Size s), (s))
FAILING(nullptr, CFMutableDictionaryRef, IOServiceNameMatching, (const char* n), (n))
FAILING(nullptr, CFMutableDictionaryRef, IOServiceMatching, (const char* n), (n))
// The matching dictionary is consumed all the same.
FAILING((CFRelease(m), platform::kIOReturnError), kern_return_t, IOServiceGetMatchingServices,
        (mach_port_t p, CFDictionaryRef m, io_iterator_t* i), (p, m, i))
FAILING(platform::kIOReturnError, kern_return_t, IORegistryEntryCreateCFProperties,
        (io_registry_entry_t e, CFMutableDictionaryRef* p, CFAllocatorRef a, IOOptionBits o),
        (e, p, a, o))
FAILING(nullptr, CFTypeRef, IORegistryEntrySearchCFProperty,
        (io_registry_entry_t e, const io_name_t p, CFStringRef k, CFAllocatorRef a, IOOptionBits o),
        (e, p, k, a, o), k)
FAILING(nullptr, const void*, CFDictionaryGetValue, (CFDictionaryRef d, const void* k), (d, k), k)
FAILING(Boolean{0}, Boolean, CFDictionaryGetValueIfPresent,
        (CFDictionaryRef d, const void* k, const void** v), (d, k, v), k)
FAILING(nullptr, CFStringRef, CFStringCreateFromExternalRepresentation,
        (CFAllocatorRef a, CFDataRef d, CFStringEncoding e), (a, d, e))
FAILING(platform::kIOReturnNoResources, kern_return_t, IOCreatePlugInInterfaceForService,
        (io_service_t s, CFUUIDRef p, CFUUIDRef i, IOCFPlugInInterface*** o, SInt32* c),
        (s, p, i, o, c))
// A release that reports a failure has released all the same.
FAILING(__real_IOObjectRelease(o) - 1, kern_return_t, IOObjectRelease, (io_object_t o), (o))
FAILING(__real_IODestroyPlugInInterface(p) - 1, kern_return_t, IODestroyPlugInInterface,
        (IOCFPlugInInterface * *p), (p))
// An unexpected type has the same branch as a missing value.
FAILING(0, CFTypeID, CFGetTypeID, (CFTypeRef o), (o))
// Both leave something in their output when they fail.
FAILING((__real_CFNumberGetValue(n, t, v), Boolean{0}), Boolean, CFNumberGetValue,
        (CFNumberRef n, CFNumberType t, void* v), (n, t, v))
FAILING((__real_CFStringGetCString(s, b, 4, e), Boolean{0}), Boolean, CFStringGetCString,
        (CFStringRef s, char* b, CFIndex z, CFStringEncoding e), (s, b, z, e))

io_object_t __real_IOIteratorNext(io_iterator_t i);
io_object_t __wrap_IOIteratorNext(io_iterator_t i) {
  const io_object_t service = Fails("IOIteratorNext") ? 0 : __real_IOIteratorNext(i);
  if (service != 0) now.device++;
  return service;
}

}  // extern "C"

namespace {

// Device 1 has its texts in the registry, devices 2 and 4 have an exceeded threshold.
DeviceLines LinesOf(int device) {
  DeviceLines lines{.path = "/dev/rdisk" + std::to_string(device), .capacity = "5.00 KB"};
  if (device == 1) lines.serial = "S1";
  if (device == 1) lines.revision = "R1";
  lines.exceeded = device == 2 || device == 4;
  return lines;
}

std::string Devices(int begin, int end) {
  std::string lines;
  for (int i = begin; i < end; i++) lines += LinesOf(i).Text();
  return lines;
}

void InstallDevices() {
  const platform::Dictionary above[kDevices] = {
      {{"AAPL,bus-id", test::Bytes({1})}},
      {{"Serial Number", test::Text("S1")}, {"Revision", test::Text("R1")}},
      {{"io-device-location", test::Bytes({'1'})}},
      {},
      {{"device-type", test::Text("Gen")}},
      {}};
  std::vector<Entry> controllers;
  for (int i = 0; i < kDevices; i++) {
    const auto drive = test::HealthyDrive(std::make_shared<FaultyDrive>());
    drive->status = LinesOf(i).exceeded;
    const auto device = i < kAtaDevices ? test::AtaDevice : test::AhciDevice;
    Entry controller{"", "", above[i], {device(drive, "disk" + std::to_string(i), 5120)}, {}};
    controller.properties.push_back({"unit number", test::Integer(0)});
    controller.children[0].properties.push_back(
        {"Protocol Characteristics",
         test::Dict({{"Physical Interconnect", test::Text(i == 5 ? "SCSI" : "ATA")}})});
    controllers.push_back(std::move(controller));
  }
  test::Install(std::move(controllers), 0x1058);
}

// The lines of the device in hand after that failure; which of two a failed search or
// conversion gives depends on whether it was the one that mattered.
std::set<std::string> LinesAfter(const Call& call) {
  const auto& [name, key, device] = call;
  const DeviceLines lines = LinesOf(device);
  if (name == "IOCreatePlugInInterfaceForService" || name == "O") {
    return {"GetSMARTFailed:" + lines.path + ":0\n"};
  }
  if (name == "IORegistryEntryCreateCFProperties" || name == "CFDictionaryGetValueIfPresent" ||
      name == "E" || key == "ATA Features") {
    return {""};
  }
  DeviceLines changed = lines;
  if (name == "S") changed.exceeded = false;
  if (name == "D" || name == "T") changed.attributes = "";
  if (name == "I" && device != 1) changed.serial = changed.revision = "";
  if (key == "Product Name" || key == "Device Characteristics") changed.product = "";
  if (key == "BSD Name") changed.path = name == "CFStringGetCString" ? "/dev/r" : "";
  if (key == "Size") changed.capacity = "";
  if (key == "Serial Number") changed.serial = LinesOf(0).serial;
  if (key == "Revision") changed.revision = LinesOf(0).revision;
  std::set<std::string> either = {changed.Text()};
  if (!key.empty()) either.insert(lines.Text());
  if (key == "Device Characteristics" && name == "CFGetTypeID") either.insert("");
  return either;
}

// Every report that may follow from that failure.
std::set<std::string> ReportsAfter(const Call& call) {
  const auto& [name, key, device] = call;
  if (name.empty() || name == "ICStart" || name == "IOObjectRelease" ||
      name == "IODestroyPlugInInterface") {
    return {Devices(0, kDevices)};
  }
  const std::string ataAlone = Devices(0, kAtaDevices);
  if (name == "IOServiceMatching" || (name == "IOServiceGetMatchingServices" && device >= 0)) {
    return {ataAlone};
  }
  if (name == "IOIteratorNext") {
    // The first of a set is drawn when the one before is through.
    if (device == kAtaDevices - 1) return {Devices(0, kDevices), ataAlone};
    return {Devices(0, device + 1) + (device < kAtaDevices ? Devices(kAtaDevices, kDevices) : "")};
  }
  if (device < 0) return {""};
  std::set<std::string> reports;
  for (const std::string& lines : LinesAfter(call)) {
    reports.insert(Devices(0, device) + lines + Devices(device + 1, kDevices));
  }
  return reports;
}

TEST(Faults, ChangeNothingButTheLinesOfTheDeviceInHand) {
  int n = 0;
  do {
    InstallDevices();
    callsUntilFailure = ++n;
    now = failed = Call();
    done.clear();
    testing::internal::CaptureStderr();
    const std::string report = test::Report();
    SCOPED_TRACE(failed.name + " " + failed.key + ", device " + std::to_string(failed.device));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(ReportsAfter(failed).contains(report)) << report;
    const bool noTable = failed.device < 0 && (failed.name == "Gestalt" || failed.name == "NewPtr");
    platform::Ledger left = {.propertyDictionaries = done["IORegistryEntryCreateCFProperties"],
                             .iterators = done["IOServiceGetMatchingServices"],
                             .services = now.device + 1 - gSMARTDriveCount,
                             .memoryBlocks = noTable ? 0 : 1};
    left.plugIns = left.smartInterfaces = failed.name == "E" ? 1 : 0;
    EXPECT_EQ(platform::OpenReferences(), left);
    platform::EndProcess();
  } while (callsUntilFailure <= 0);
  EXPECT_EQ(done.size(), 24U) << "a call that is wrapped is not made";
}

TEST(Faults, OneAfterAnotherInTheSameSlotLeaveNoTrace) {
  auto disabled = test::HealthyDrive();
  disabled->enables = false;
  auto noInterface = test::HealthyDrive();
  noInterface->opens = false;
  test::Install({test::AtaDevice(disabled, "disk0", 5120), test::AtaDevice(noInterface, "disk1"),
                 test::AtaDevice(nullptr, "disk2"), test::AtaDevice(test::HealthyDrive(), "disk3"),
                 test::AtaDevice(test::HealthyDrive(), "disk4")},
                0x1058);
  callsUntilFailure = 0;
  const DeviceLines last{.path = "/dev/rdisk4"};
  EXPECT_EQ(test::Report(), "GetSMARTFailed:/dev/rdisk1:0\nGetSMARTFailed:/dev/rdisk2:0\n" +
                                Devices(3, 4) + last.Text());
  EXPECT_EQ(disabled->calls, "OE");
  EXPECT_EQ(noInterface->calls, "O");
  platform::EndProcess();
}

}  // namespace
