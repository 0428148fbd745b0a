// Every call of a pass fails once, in one pass after another. Only the lines of the
// device in hand may change, in the way that its failure explains, and only what the
// probe never releases may be left behind.
#include <Carbon/Carbon.h>
#include <IOKit/storage/ata/ATASMARTLib.h>

#include <algorithm>
#include <set>

#include "platform/io_return.h"
#include "platform/objects.h"
#include "platform/process_end.h"
#include "platform/registry_handles.h"
#include "probe/drive_table.h"
#include "tests/support.h"

using platform::Entry;
using platform::Ledger;

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
Call now, failed;
Ledger handedOut;
std::vector<const Entry*> devices;

bool Fails(const char* name) {
  now.name = name;
  if (--callsUntilFailure != 0) return false;
  failed = now;
  return true;
}

bool Fails(const char* name, const void* key) {
  now.key = platform::Deref<platform::StringObject>(key, "test").text;
  return Fails(name);
}

io_object_t Visited(io_object_t service) {
  if (service == 0) return 0;
  handedOut.services++;
  const Entry* entry = platform::ServicePath(service, "test").back();
  now.device = static_cast<int>(std::ranges::find(devices, entry) - devices.begin());
  return service;
}

// A drive whose commands are calls too.
struct FaultyDrive : test::FakeDrive {
  bool Open() override { return !Fails("QueryInterface") && FakeDrive::Open(); }
  bool Enable(bool enable) override { return !Fails("Enable") && FakeDrive::Enable(enable); }
  std::optional<bool> ReturnStatus() override {
    return Fails("ReturnStatus") ? std::nullopt : FakeDrive::ReturnStatus();
  }
  std::optional<Block> ReadData() override {
    return Fails("ReadData") ? std::nullopt : FakeDrive::ReadData();
  }
  std::optional<Block> ReadThresholds() override {
    return Fails("ReadThresholds") ? std::nullopt : FakeDrive::ReadThresholds();
  }
  std::optional<Block> Identify() override {
    return Fails("Identify") ? std::nullopt : FakeDrive::Identify();
  }
};

}  // namespace

// The linker sends the probe's calls here first.
#define FAILING(failure, result, call, parameters, arguments) \
  result __real_##call parameters;                            \
  result __wrap_##call parameters { return Fails(#call) ? (failure) : __real_##call arguments; }

extern "C" {

FAILING(-1, OSErr, Gestalt, (OSType s, SInt32* r), (s, r))
FAILING(-1, OSStatus, ICStart, (ICInstance * i, OSType s), (i, s))
FAILING(nullptr, Ptr, NewPtr, (Size s), (s))
FAILING(nullptr, CFMutableDictionaryRef, IOServiceNameMatching, (const char* n), (n))
FAILING(nullptr, CFMutableDictionaryRef, IOServiceMatching, (const char* n), (n))
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
  return Fails("IOIteratorNext") ? 0 : Visited(__real_IOIteratorNext(i));
}

kern_return_t __real_IOServiceGetMatchingServices(mach_port_t p, CFDictionaryRef m,
                                                  io_iterator_t* i);
kern_return_t __wrap_IOServiceGetMatchingServices(mach_port_t p, CFDictionaryRef m,
                                                  io_iterator_t* i) {
  if (Fails("IOServiceGetMatchingServices")) {
    CFRelease(m);  // consumed all the same
    return platform::kIOReturnError;
  }
  handedOut.iterators++;
  return __real_IOServiceGetMatchingServices(p, m, i);
}

kern_return_t __real_IORegistryEntryCreateCFProperties(io_registry_entry_t e,
                                                       CFMutableDictionaryRef* p, CFAllocatorRef a,
                                                       IOOptionBits o);
kern_return_t __wrap_IORegistryEntryCreateCFProperties(io_registry_entry_t e,
                                                       CFMutableDictionaryRef* p, CFAllocatorRef a,
                                                       IOOptionBits o) {
  if (Fails("IORegistryEntryCreateCFProperties")) return platform::kIOReturnError;
  handedOut.propertyDictionaries++;
  return __real_IORegistryEntryCreateCFProperties(e, p, a, o);
}

CFTypeRef __real_IORegistryEntrySearchCFProperty(io_registry_entry_t e, const io_name_t p,
                                                 CFStringRef k, CFAllocatorRef a, IOOptionBits o);
CFTypeRef __wrap_IORegistryEntrySearchCFProperty(io_registry_entry_t e, const io_name_t p,
                                                 CFStringRef k, CFAllocatorRef a, IOOptionBits o) {
  return Fails("IORegistryEntrySearchCFProperty", k)
             ? nullptr
             : __real_IORegistryEntrySearchCFProperty(e, p, k, a, o);
}

const void* __real_CFDictionaryGetValue(CFDictionaryRef d, const void* k);
const void* __wrap_CFDictionaryGetValue(CFDictionaryRef d, const void* k) {
  return Fails("CFDictionaryGetValue", k) ? nullptr : __real_CFDictionaryGetValue(d, k);
}

Boolean __real_CFDictionaryGetValueIfPresent(CFDictionaryRef d, const void* k, const void** v);
Boolean __wrap_CFDictionaryGetValueIfPresent(CFDictionaryRef d, const void* k, const void** v) {
  return Fails("CFDictionaryGetValueIfPresent", k) ? 0
                                                   : __real_CFDictionaryGetValueIfPresent(d, k, v);
}

}  // extern "C"

namespace {

// The fields of one device's lines.
struct Lines {
  std::string path, product = "EXAMPLE 250", revision = "REV     ", capacity = "5.00 KB";
  std::string serial = "SERIAL              ";
  bool attributes = true, exceeded = false;

  std::string Text() const {
    return "SmartDeviceStart:::" + path + ":::" + product + ":::" + revision + ":::" + capacity +
           ":::" + serial + "\n" +
           (attributes ? "SMARTStatus:::194:::Temperature:::8704:::38:::Always Passing:::"
                         "Life-Span:OK\n"
                       : "") +
           "SmartDeviceEnd:::" + path + ":::" + (exceeded ? "True" : "False") + "\n";
  }
};

// Device 1 has its texts in the registry, devices 2 and 4 have an exceeded threshold.
Lines LinesOf(int device) {
  Lines lines;
  lines.path = "/dev/rdisk" + std::to_string(device);
  if (device == 1) lines.serial = "S1";
  if (device == 1) lines.revision = "R1";
  lines.exceeded = device == 2 || device == 4;
  return lines;
}

void InstallDevices() {
  std::vector<Entry> controllers;
  for (int i = 0; i < kDevices; i++) {
    auto drive = std::make_shared<FaultyDrive>();
    const auto healthy = test::HealthyDrive();
    drive->data = healthy->data;
    drive->thresholds = healthy->thresholds;
    drive->identify = healthy->identify;
    drive->status = LinesOf(i).exceeded;
    const std::string disk = "disk" + std::to_string(i);
    Entry device =
        i < kAtaDevices ? test::AtaDevice(drive, disk, 5120) : test::AhciDevice(drive, disk, 5120);
    device.properties.push_back(
        {"Protocol Characteristics",
         test::Dict({{"Physical Interconnect", test::Text(i == 5 ? "SCSI" : "ATA")}})});
    Entry controller{"Controller", "", {{"unit number", test::Integer(0)}}, {}, {}};
    if (i == 1) controller.properties.push_back({"Serial Number", test::Text("S1")});
    if (i == 1) controller.properties.push_back({"Revision", test::Text("R1")});
    if (i == 0) controller.properties.push_back({"AAPL,bus-id", test::Bytes({1})});
    if (i == 2) controller.properties.push_back({"io-device-location", test::Bytes({'1'})});
    if (i == 4) controller.properties.push_back({"device-type", test::Text("Gen")});
    controller.children.push_back(std::move(device));
    controllers.push_back(std::move(controller));
  }
  devices.clear();
  for (const Entry& root : test::Install(std::move(controllers), 0x1058).roots) {
    devices.push_back(root.children.data());
  }
}

// The lines of the device in hand after that failure; which of two a failed search or
// conversion gives depends on whether it was the one that mattered.
std::set<std::string> LinesAfter(const Call& call) {
  const Lines lines = LinesOf(call.device);
  const auto with = [lines](auto&& change) {
    Lines changed = lines;
    change(changed);
    return changed.Text();
  };
  const auto own = LinesOf(0);  // what the drive says of itself
  const std::string& name = call.name;
  if (name == "IOCreatePlugInInterfaceForService" || name == "QueryInterface") {
    return {"GetSMARTFailed:" + lines.path + ":0\n"};
  }
  if (name == "IORegistryEntryCreateCFProperties" || name == "CFDictionaryGetValueIfPresent" ||
      name == "Enable" || call.key == "ATA Features") {
    return {""};
  }
  if (name == "ReturnStatus") return {with([](Lines& l) { l.exceeded = false; })};
  if (name == "ReadData" || name == "ReadThresholds") {
    return {with([](Lines& l) { l.attributes = false; })};
  }
  if (name == "Identify") {
    return {with([&](Lines& l) {
      if (l.serial == own.serial) l.serial = l.revision = "";
    })};
  }
  std::set<std::string> either = {lines.Text()};
  if (name == "CFGetTypeID" && call.key == "Device Characteristics") either.insert("");
  if (call.key == "Product Name" || call.key == "Device Characteristics") {
    either.insert(with([](Lines& l) { l.product = ""; }));
  }
  if (call.key == "BSD Name") {
    either.insert(with([&](Lines& l) { l.path = name == "CFStringGetCString" ? "/dev/r" : ""; }));
  }
  if (call.key == "Size") either.insert(with([](Lines& l) { l.capacity = ""; }));
  if (call.key == "Serial Number") either.insert(with([&](Lines& l) { l.serial = own.serial; }));
  if (call.key == "Revision") either.insert(with([&](Lines& l) { l.revision = own.revision; }));
  return either;
}

std::string Devices(int begin, int end) {
  std::string lines;
  for (int i = begin; i < end; i++) lines += LinesOf(i).Text();
  return lines;
}

// Every report that may follow from that failure.
std::set<std::string> ReportsAfter(const Call& call) {
  const int device = call.device;
  const bool inAta = device < kAtaDevices;
  if (call.name == "ICStart" || call.name == "IOObjectRelease" ||
      call.name == "IODestroyPlugInInterface") {
    return {Devices(0, kDevices)};
  }
  if (call.name == "IOServiceMatching" ||
      (call.name == "IOServiceGetMatchingServices" && device >= 0)) {
    return {Devices(0, kAtaDevices)};
  }
  if (call.name == "IOIteratorNext") {
    // The first of a set is drawn when the one before is through.
    const std::string ends = Devices(0, device + 1) + (inAta ? Devices(kAtaDevices, kDevices) : "");
    if (device == kAtaDevices - 1) return {Devices(0, kDevices), Devices(0, kAtaDevices)};
    return {ends};
  }
  if (device < 0) return {""};
  std::set<std::string> reports;
  for (const std::string& lines : LinesAfter(call)) {
    reports.insert(Devices(0, device) + lines + Devices(device + 1, kDevices));
  }
  return reports;
}

Ledger LeftAfter(const Call& call) {
  Ledger left = handedOut;
  left.services -= gSMARTDriveCount;
  left.plugIns = left.smartInterfaces = call.name == "Enable" ? 1 : 0;
  const bool noTable = call.device < 0 && (call.name == "Gestalt" || call.name == "NewPtr");
  left.memoryBlocks = noTable ? 0 : 1;
  return left;
}

// Runs the pass in which call number `n` fails. False: it makes fewer calls.
bool RunPass(int n, std::string& report) {
  InstallDevices();
  callsUntilFailure = n;
  now = failed = Call();
  handedOut = Ledger();
  testing::internal::CaptureStderr();
  report = test::Report();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(platform::OpenReferences(), LeftAfter(failed)) << failed.name << " " << failed.key;
  platform::EndProcess();
  return callsUntilFailure <= 0;
}

TEST(Faults, ChangeNothingButTheLinesOfTheDeviceInHand) {
  std::set<std::string> names;
  std::set<std::string> changed;
  std::string report;
  int n = 1;
  for (; RunPass(n, report); n++) {
    const std::set<std::string> allowed = ReportsAfter(failed);
    EXPECT_TRUE(allowed.contains(report)) << "call " << n << ", " << failed.name << " "
                                          << failed.key << ", device " << failed.device << ":\n"
                                          << report;
    names.insert(failed.name);
    if (report != Devices(0, kDevices)) changed.insert(failed.name + " " + failed.key);
  }
  EXPECT_EQ(report, Devices(0, kDevices)) << "nothing fails in the last pass";
  EXPECT_EQ(names.size(), 24U) << "a call that is wrapped is not made";
  for (const char* key : {"Product Name", "BSD Name"}) {
    EXPECT_TRUE(changed.contains(std::string("CFStringGetCString ") + key)) << key;
  }
  for (const char* key : {"BSD Name", "Size", "Serial Number", "Revision"}) {
    EXPECT_TRUE(changed.contains(std::string("IORegistryEntrySearchCFProperty ") + key)) << key;
  }
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
  const Lines third = LinesOf(3);
  Lines fourth = LinesOf(4);
  fourth.capacity = "";
  fourth.exceeded = false;
  EXPECT_EQ(test::Report(), "GetSMARTFailed:/dev/rdisk1:0\nGetSMARTFailed:/dev/rdisk2:0\n" +
                                third.Text() + fourth.Text());
  EXPECT_EQ(disabled->calls, "OE");
  EXPECT_EQ(noInterface->calls, "O");
  platform::EndProcess();
}

}  // namespace
