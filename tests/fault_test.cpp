// Every call of a pass that can fail does so once, in one pass after another. Only the
// lines of the device in hand may change, in the way that its failure explains, and only
// what the probe never releases may be left open.
#include <Carbon/Carbon.h>
#include <IOKit/storage/ata/ATASMARTLib.h>

#include <map>

#include "platform/objects.h"
#include "probe/state/drive_table.h"
#include "probe/text/byte_count_labels.h"
#include "probe/text/value_to_text.h"
#include "tests/support.h"

namespace test {

constexpr int kAtaDevices = 3;
constexpr int kDevices = 6;

// What is called, for which key of the registry, and for which device.
struct Call {
  std::string name, key;
  int device = -1;
};

int callsUntilFailure = 0;
std::map<std::string, int> done;  // how often each call was made and did not fail
Call now, failed;

bool Fails(const char* name, const void* key = nullptr) {
  now.name = name;
  // A drive's interface goes first, then its plug-in, then its service.
  Ledger open = OpenReferences();
  EXPECT_TRUE(now.name != "IODestroyPlugInInterface" || open[kSMARTInterface] < open[kPlugIn]);
  EXPECT_TRUE(now.name != "IOObjectRelease" || open[kPlugIn] < open[kService]);
  if (key != nullptr) now.key = platform::ValueOf<std::string>(key, "test");
  if (--callsUntilFailure == 0) failed = now;
  if (callsUntilFailure != 0) done[name]++;
  return callsUntilFailure == 0;
}

// Of an argument that the platform layer does not look at.
void Expect(bool isSo) { EXPECT_TRUE(isSo); }

// The linker sends the probe's calls here first. The key, if any, stands after the arguments.
#define FAILING(failure, call, parameters, arguments, ...)                                \
  decltype(call) __real_##call;                                                           \
  auto __wrap_##call parameters->decltype(call arguments) {                               \
    return Fails(#call __VA_OPT__(, ) __VA_ARGS__) ? (failure) : __real_##call arguments; \
  }

// Puts a function table of the test's own in the place of `table`, which goes to `real`.
template <typename Table, typename Change>
void Watch(Table*& table, Table& real, Change change) {
  static Table watched;
  change(watched = real = *table);
  table = &watched;
}

IOCFPlugInInterface realPlugIn;
IOATASMARTInterface realSMART;
std::string commands;  // to the drives, a letter each: E S D T I

template <char kLetter, auto kOperation, typename... Arguments>
IOReturn Ask(void* self, Arguments... arguments) {
  now.key = "";
  commands += kLetter;
  const char name[] = {kLetter, '\0'};
  return Fails(name) ? -1 : (realSMART.*kOperation)(self, arguments...);
}

HRESULT Query(void* self, REFIID id, LPVOID* result) {
  using Interface = IOATASMARTInterface;
  now.key = "";
  if (Fails("O")) return -1;
  *result = nullptr;
  if (Fails("a success without an interface")) return S_OK;
  const HRESULT status = realPlugIn.QueryInterface(self, id, result);
  Watch(*static_cast<Interface**>(*result), realSMART, [](Interface& watched) {
    watched.SMARTEnableDisableOperations = Ask<'E', &Interface::SMARTEnableDisableOperations>;
    watched.SMARTReturnStatus = Ask<'S', &Interface::SMARTReturnStatus>;
    watched.SMARTReadData = Ask<'D', &Interface::SMARTReadData>;
    watched.SMARTReadDataThresholds = Ask<'T', &Interface::SMARTReadDataThresholds>;
    watched.GetATAIdentifyData = Ask<'I', &Interface::GetATAIdentifyData>;
  });
  return status;
}

extern "C" {

FAILING(-1, Gestalt, (OSType s, SInt32* r), (s, r))
FAILING(-1, ICStart, (ICInstance * i, OSType s), (i, (Expect(s == 0x506F766B), s)))
FAILING(nullptr, NewPtr, (Size s), (s))
FAILING(nullptr, IOServiceNameMatching, (const char* n), (n))
FAILING(nullptr, IOServiceMatching, (const char* n), (n))
// The matching dictionary is consumed all the same.
FAILING((CFRelease(m), -1), IOServiceGetMatchingServices,
        (mach_port_t p, CFDictionaryRef m, io_iterator_t* i), ((Expect(p == 0), p), m, i))
FAILING(-1, IORegistryEntryCreateCFProperties,
        (io_object_t e, CFMutableDictionaryRef* p, CFAllocatorRef a, IOOptionBits o), (e, p, a, o))
FAILING(nullptr, IORegistryEntrySearchCFProperty,
        (io_object_t e, const io_name_t p, CFStringRef k, CFAllocatorRef a, IOOptionBits o),
        (e, p, k, a, o), k)
FAILING(nullptr, CFDictionaryGetValue, (CFDictionaryRef d, const void* k), (d, k), k)
FAILING(Boolean{0}, CFDictionaryGetValueIfPresent,
        (CFDictionaryRef d, const void* k, const void** v), (d, k, v), k)
FAILING(nullptr, CFBundleCopyLocalizedString,
        (CFBundleRef b, CFStringRef k, CFStringRef v, CFStringRef t), (b, k, v, t))
FAILING(nullptr, CFStringCreateFromExternalRepresentation,
        (CFAllocatorRef a, CFDataRef d, CFStringEncoding e), (a, d, e))
// A release that reports a failure has released all the same.
FAILING(__real_IOObjectRelease(o) - 1, IOObjectRelease, (io_object_t o), (o))
FAILING(__real_IODestroyPlugInInterface(p) - 1, IODestroyPlugInInterface,
        (IOCFPlugInInterface * *p), (p))
// An unexpected type has the same branch as a missing value.
FAILING(0, CFGetTypeID, (CFTypeRef o), (o))
// Both leave something in their output when they fail.
FAILING((__real_CFNumberGetValue(n, t, v), Boolean{0}), CFNumberGetValue,
        (CFNumberRef n, CFNumberType t, void* v), (n, t, v))
FAILING((__real_CFStringGetCString(s, b, 4, e), Boolean{0}), CFStringGetCString,
        (CFStringRef s, char* b, CFIndex z, CFStringEncoding e), (s, b, z, e))

decltype(IOCreatePlugInInterfaceForService) __real_IOCreatePlugInInterfaceForService;
kern_return_t __wrap_IOCreatePlugInInterfaceForService(io_service_t s, CFUUIDRef p, CFUUIDRef i,
                                                       IOCFPlugInInterface*** o, SInt32* c) {
  if (Fails("IOCreatePlugInInterfaceForService")) return -1;
  const kern_return_t result = __real_IOCreatePlugInInterfaceForService(s, p, i, o, c);
  Watch(**o, realPlugIn, [](IOCFPlugInInterface& watched) { watched.QueryInterface = Query; });
  return result;
}

decltype(IOIteratorNext) __real_IOIteratorNext;
io_object_t __wrap_IOIteratorNext(io_iterator_t i) {
  const io_object_t service = Fails("IOIteratorNext") ? 0 : __real_IOIteratorNext(i);
  if (service != 0) now.device++;
  return service;
}

}  // extern "C"

// Device 1 has its texts in the registry, each longer than its field; devices 2 and 4 have an
// exceeded threshold.
DeviceLines LinesOf(int device) {
  DeviceLines lines{.path = "/dev/rdisk" + std::to_string(device), .capacity = "5.00 KB"};
  lines.exceeded = device == 2 || device == 4;
  if (device == 1) lines.serial = "12345678901234567890";
  if (device == 1) lines.revision = "12345678";
  return lines;
}

std::string Devices(int begin, int end) {
  std::string lines;
  for (int i = begin; i < end; i++) lines += LinesOf(i).Text();
  return lines;
}

std::vector<Entry> Controllers() {
  std::map<int, Dictionary> above = {
      {0, {{"AAPL,bus-id", Bytes({1})}}},
      {1, {{"Serial Number", Text("123456789012345678901")}, {"Revision", Text("12345678X")}}},
      {2, {{"io-device-location", Bytes({'1'})}}},
      {4, {{"device-type", Text("Gen")}}}};
  std::vector<Entry> controllers;
  for (int i = 0; i < kDevices; i++) {
    DriveAnswers answers = HealthyAnswers();
    answers.exceeded = LinesOf(i).exceeded;
    Entry device = (i < kAtaDevices ? AtaDevice : AhciDevice)(DriveOf(answers),
                                                              "disk" + std::to_string(i), 5120);
    device.properties["Protocol Characteristics"] =
        Dict({{"Physical Interconnect", Text(i == 5 ? "SCSI" : "ATA")}});
    above[i].emplace("unit number", Integer(0));
    controllers.push_back({"", "", above[i], {device}, {}});
  }
  return controllers;
}

// What a failed call does to the report.
enum class Effect { kNone, kNoReport, kNoSet, kNoFurther, kFailureLine, kNoLine, kLine, kText };
using enum Effect;

// kNoSet: no set of devices comes after that; kNoFurther: no device of its set does; kLine:
// condition or attributes of the drive are not known; kText: a text is lost, if no other search has
// it.
Effect EffectOf(const Call& call) {
  static const std::map<std::string, Effect> kEffects = {
      {"Gestalt", kNoReport},
      {"NewPtr", kNoReport},
      {"ICStart", kNone},
      {"IOObjectRelease", kNone},
      {"IODestroyPlugInInterface", kNone},
      {"IOServiceNameMatching", kNoSet},
      {"IOServiceMatching", kNoSet},
      {"IOServiceGetMatchingServices", kNoSet},
      {"IOIteratorNext", kNoFurther},
      {"IORegistryEntryCreateCFProperties", kNoLine},
      {"CFDictionaryGetValueIfPresent", kNoLine},
      {"IOCreatePlugInInterfaceForService", kFailureLine},
      {"O", kFailureLine},
      {"a success without an interface", kFailureLine},
      {"E", kNoLine},
      {"S", kLine},
      {"D", kLine},
      {"T", kLine}};
  if (call.name.empty()) return kNone;
  if (call.key == "ATA Features") return kNoLine;
  const auto found = kEffects.find(call.name);
  const bool isLater = found != kEffects.end() && found->second == kNoReport && call.device >= 0;
  return found == kEffects.end() || isLater ? kText : found->second;
}

// Whether these may be the lines of the device in hand after that failure.
bool MayFollow(const Call& call, const std::string& lines) {
  DeviceLines all = LinesOf(call.device);
  switch (EffectOf(call)) {
    case kFailureLine:
      return lines == "GetSMARTFailed:" + all.path + ":0\n";
    case kNoLine:
      return lines.empty();
    case kLine:
      if (call.name == "S") all.exceeded = false;
      if (call.name != "S") all.attributes = "";
      return lines == all.Text();
    case kText: {
      // Without its characteristics nothing says that the device has S.M.A.R.T.
      const bool mayBeEmpty = call.name == "CFGetTypeID" && call.key == "Device Characteristics";
      const std::string verdict = all.exceeded ? ":::True\n" : ":::False\n";
      return (lines.find("\n" + all.attributes + "SmartDeviceEnd:::") != std::string::npos &&
              lines.ends_with(verdict)) ||
             (lines.empty() && mayBeEmpty);
    }
    default:
      return lines == all.Text();
  }
}

// Whether the report may follow from that failure.
bool MayFollow(const Call& call, std::string_view report, Effect effect) {
  const std::string soFar = Devices(0, call.device + 1);
  if (effect == kNone) return report == Devices(0, kDevices);
  if (effect == kNoReport || effect == kNoSet) return report == soFar;
  if (effect == kNoFurther) {
    // The first of a set is drawn when the one before is through.
    const bool isATA = call.device < kAtaDevices;
    return report == soFar + (isATA ? Devices(kAtaDevices, kDevices) : "") ||
           (call.device == kAtaDevices - 1 && report == soFar);
  }
  const std::string before = Devices(0, call.device);
  const std::string after = Devices(call.device + 1, kDevices);
  if (!report.starts_with(before) || !report.ends_with(after)) return false;
  if (report.size() < before.size() + after.size()) return false;
  report.remove_prefix(before.size());
  report.remove_suffix(after.size());
  return MayFollow(call, std::string(report));
}

TEST(Faults, ChangeNothingButTheLinesOfTheDeviceInHand) {
  int n = 0;
  do {
    callsUntilFailure = ++n;
    now = failed = Call();
    done.clear();
    commands.clear();
    const std::string report = Report(Controllers(), 0x1058);
    SCOPED_TRACE(failed.name + " " + failed.key + ", device " + std::to_string(failed.device));
    EXPECT_TRUE(MayFollow(failed, report, EffectOf(failed))) << report;
    Ledger left = {{kPropertyDictionary, done["IORegistryEntryCreateCFProperties"]},
                   {kIterator, done["IOServiceGetMatchingServices"]},
                   {kService, now.device + 1 - gSMARTDriveCount},
                   {kMemoryBlock, 1}};
    if (failed.name == "E") left[kPlugIn] = left[kSMARTInterface] = 1;
    if (failed.device < 0 && (failed.name == "Gestalt" || failed.name == "NewPtr")) left.clear();
    std::erase_if(left, [](const auto& count) { return count.second == 0; });
    EXPECT_EQ(OpenReferences(), left);
  } while (callsUntilFailure <= 0);
  EXPECT_EQ(done.size(), 25U) << "a call that is wrapped is not made";
  EXPECT_EQ(commands, Repeated(kDevices, "ESDTI"));
  commands.clear();
  callsUntilFailure = 0;  // none
  Report(Controllers(), 0x102F);
  EXPECT_EQ(commands, Repeated(kDevices, "ESDT"));
}

// Neither can fail in a pass whose report shows it.
TEST(Faults, LeaveATextEmptyOrAsItWas) {
  const Data data = {1, 2};
  const platform::ValueObject object(&data);
  char text[] = "untouched";
  callsUntilFailure = 1;
  BytesSInt64ToCStrWLabel(5, text, true);
  EXPECT_STREQ(text, "untouched");
  for (CFNumberType type = kCFNumberSInt8Type; type <= kCFNumberDoubleType; type++) {
    const platform::Number five = {type, 5};
    const platform::ValueObject number(&five);
    callsUntilFailure = 1;
    ConvertCFNumberToCStr(static_cast<CFNumberRef>(platform::Ref(&number)), text, true);
    EXPECT_STREQ(text, "untouched") << type;
  }
  callsUntilFailure = 1;
  ConvertCFDataToCStr(static_cast<CFDataRef>(platform::Ref(&object)), text);
  EXPECT_STREQ(text, "");
}

}  // namespace test
