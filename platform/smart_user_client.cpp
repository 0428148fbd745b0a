// The S.M.A.R.T. user client: its plug-in and its interface, whose functions give the answers of
// the machine's drive.
#include <IOKit/storage/ata/ATASMARTLib.h>

#include <cstring>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/ledger.h"
#include "platform/machine.h"
#include "platform/registry.h"

namespace {

using platform::BlockAnswer;
using platform::DriveAnswers;
using platform::Entry;

// The results of failed calls. The probe only checks for success, so they are not in the
// framework's headers.
constexpr auto kIOReturnError = static_cast<IOReturn>(0xE00002BC);
constexpr auto kIOReturnNoResources = static_cast<IOReturn>(0xE00002BE);
constexpr auto kIOReturnBadArgument = static_cast<IOReturn>(0xE00002C2);
constexpr auto kIOReturnUnsupported = static_cast<IOReturn>(0xE00002C7);
constexpr auto kNoInterface = static_cast<HRESULT>(0x80000004);

// Both begin with a pointer to their function table, and the probe sees only that.
struct PlugIn {
  IOCFPlugInInterface* table;
  const Entry* entry;
  ULONG references = 1;
  std::optional<DriveAnswers> answers = {};  // once the drive is asked
  bool isDisabled = false;
  std::vector<void*> interfaces = {};  // those that are alive, each a SMARTInterface
};
struct SMARTInterface {
  IOATASMARTInterface* table;
  PlugIn* plugIn;
  ULONG references = 1;
};

// Never destroyed, so that what the probe does not release is no leak.
template <typename Instance>
std::unordered_map<const void*, std::unique_ptr<Instance>>& Live() {
  static auto& live = *new std::unordered_map<const void*, std::unique_ptr<Instance>>;
  return live;
}

// The entries whose device has a client.
std::unordered_set<const Entry*>& BusyEntries() {
  static auto& entries = *new std::unordered_set<const Entry*>;
  return entries;
}

template <typename Instance>
Instance& NewInstance(Instance contents) {
  auto made = std::make_unique<Instance>(std::move(contents));
  Instance& instance = *made;
  Live<Instance>().emplace(&instance, std::move(made));
  return instance;
}

template <typename Instance>
Instance& InstanceOf(const void* self, const char* call) {
  const auto found = Live<Instance>().find(self);
  if (found == Live<Instance>().end()) platform::Misuse(call, "the interface is null or dead");
  return *found->second;
}

void EndInterfaces(PlugIn& plugIn) {
  for (void* interface : plugIn.interfaces) Live<SMARTInterface>().erase(interface);
  plugIn.interfaces.clear();
}

void End(PlugIn& plugIn) {
  EndInterfaces(plugIn);
  BusyEntries().erase(plugIn.entry);
}
void End(SMARTInterface& interface) { std::erase(interface.plugIn->interfaces, &interface); }

template <typename Instance>
ULONG AddReference(void* self) {
  return ++InstanceOf<Instance>(self, "AddRef").references;
}

template <typename Instance>
ULONG DropReference(void* self) {
  auto& instance = InstanceOf<Instance>(self, "Release");
  const ULONG left = --instance.references;
  if (left > 0) return left;
  End(instance);
  Live<Instance>().erase(self);
  return 0;
}

PlugIn& PlugInOf(void* interface, const char* call) {
  return *InstanceOf<SMARTInterface>(interface, call).plugIn;
}

IOReturn EnableDisable(void* interface, Boolean enable) {
  PlugIn& plugIn = PlugInOf(interface, "SMARTEnableDisableOperations");
  if (!plugIn.answers->enables) return kIOReturnError;
  plugIn.isDisabled = enable != 1;
  return kIOReturnSuccess;
}

IOReturn ReturnStatus(void* interface, Boolean* exceededCondition) {
  const PlugIn& plugIn = PlugInOf(interface, "SMARTReturnStatus");
  if (plugIn.isDisabled || !plugIn.answers->exceeded) return kIOReturnError;
  *exceededCondition = *plugIn.answers->exceeded;
  return kIOReturnSuccess;
}

IOReturn CopyBlock(const PlugIn& plugIn, const BlockAnswer& block, void* output) {
  if (plugIn.isDisabled) return kIOReturnError;
  if (block.succeeds) std::memset(output, 0, base::kBlockSize);
  if (!block.bytes.empty()) std::memcpy(output, block.bytes.data(), block.bytes.size());
  return block.succeeds ? kIOReturnSuccess : kIOReturnError;
}

IOReturn ReadData(void* interface, ATASMARTData* data) {
  const PlugIn& plugIn = PlugInOf(interface, "SMARTReadData");
  return CopyBlock(plugIn, plugIn.answers->data, data);
}

IOReturn ReadThresholds(void* interface, ATASMARTDataThresholds* data) {
  const PlugIn& plugIn = PlugInOf(interface, "SMARTReadDataThresholds");
  return CopyBlock(plugIn, plugIn.answers->thresholds, data);
}

IOReturn GetIdentifyData(void* interface, void* buffer, UInt32 inSize, UInt32* outSize) {
  const BlockAnswer& identify = PlugInOf(interface, "GetATAIdentifyData").answers->identify;
  if (inSize == 0 || inSize > base::kBlockSize) return kIOReturnBadArgument;
  if (!identify.succeeds) return kIOReturnError;
  std::memcpy(buffer, identify.Block()->data(), inSize);
  *outSize = inSize;
  return kIOReturnSuccess;
}

bool IsSame(CFUUIDBytes one, CFUUIDBytes other) {
  return std::memcmp(&one, &other, sizeof one) == 0;
}

HRESULT NoFurtherInterface(void* /*self*/, REFIID /*iid*/, LPVOID* result) {
  *result = nullptr;
  return kNoInterface;
}

HRESULT QuerySMARTInterface(void* self, REFIID iid, LPVOID* result) {
  static IOATASMARTInterface table = {nullptr,
                                      NoFurtherInterface,
                                      AddReference<SMARTInterface>,
                                      DropReference<SMARTInterface>,
                                      EnableDisable,
                                      ReturnStatus,
                                      ReadData,
                                      ReadThresholds,
                                      GetIdentifyData};
  auto& plugIn = InstanceOf<PlugIn>(self, "QueryInterface");
  if (!IsSame(iid, CFUUIDGetUUIDBytes(kIOATASMARTInterfaceID))) {
    return NoFurtherInterface(self, iid, result);
  }
  if (!plugIn.answers) plugIn.answers = plugIn.entry->drive();
  if (!plugIn.answers->whyNotOpened.empty()) return kNoInterface;
  plugIn.interfaces.push_back(&NewInstance(SMARTInterface{&table, &plugIn}));
  *result = plugIn.interfaces.back();
  return S_OK;
}

}  // namespace

void platform::CountUserClients(Ledger& ledger) {
  for (const auto& [self, plugIn] : Live<PlugIn>()) {
    ledger[ReferenceKind::kPlugIn] += static_cast<int>(plugIn->references);
  }
  for (const auto& [self, interface] : Live<SMARTInterface>()) {
    ledger[ReferenceKind::kSMARTInterface] += static_cast<int>(interface->references);
  }
}

void platform::DropUserClients() {
  Live<SMARTInterface>().clear();
  Live<PlugIn>().clear();
  BusyEntries().clear();
}

kern_return_t IOCreatePlugInInterfaceForService(io_service_t service, CFUUIDRef pluginType,
                                                CFUUIDRef interfaceType,
                                                IOCFPlugInInterface*** theInterface,
                                                SInt32* theScore) {
  static IOCFPlugInInterface table = {nullptr, QuerySMARTInterface, AddReference<PlugIn>,
                                      DropReference<PlugIn>};
  const Entry& entry = platform::EntryOf(service, "IOCreatePlugInInterfaceForService");
  if (pluginType != kIOATASMARTUserClientTypeID || interfaceType != kIOCFPlugInInterfaceID ||
      !entry.drive) {
    return kIOReturnUnsupported;
  }
  if (!BusyEntries().insert(&entry).second) return kIOReturnNoResources;
  *theInterface = &NewInstance(PlugIn{&table, &entry}).table;
  *theScore = 0;
  return kIOReturnSuccess;
}

kern_return_t IODestroyPlugInInterface(IOCFPlugInInterface** interface) {
  EndInterfaces(InstanceOf<PlugIn>(interface, "IODestroyPlugInInterface"));
  DropReference<PlugIn>(interface);
  return kIOReturnSuccess;
}
