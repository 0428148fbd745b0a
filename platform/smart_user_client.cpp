// The S.M.A.R.T. user client: its plug-in and its interface, whose functions ask the
// machine's drive.
#include <IOKit/storage/ata/ATASMARTLib.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <type_traits>
#include <unordered_map>

#include "platform/ledger.h"
#include "platform/machine.h"
#include "platform/registry.h"

namespace {

using platform::Drive;
using platform::ReferenceKind;

// The results of failed calls. The probe tells success from failure only, so they are
// not in the framework's headers.
constexpr auto kIOReturnError = static_cast<IOReturn>(0xE00002BC);
constexpr auto kIOReturnNoResources = static_cast<IOReturn>(0xE00002BE);
constexpr auto kIOReturnUnsupported = static_cast<IOReturn>(0xE00002C7);
constexpr auto kNoInterface = static_cast<HRESULT>(0x80000004);

// An interface as the probe sees it begins with a pointer to its function table.
template <typename Table>
struct Instance {
  Table* table;
  std::shared_ptr<Drive> drive;
  ULONG references = 1;
};
using PlugIn = Instance<IOCFPlugInInterface>;
using SMARTInterface = Instance<IOATASMARTInterface>;

template <typename Table>
constexpr ReferenceKind kKind =
    std::is_same_v<Table, IOCFPlugInInterface> ? ReferenceKind::kPlugIn
                                               : ReferenceKind::kSMARTInterface;

// Never destroyed, so that what the probe does not release is no leak.
template <typename Table>
std::unordered_map<const void*, std::unique_ptr<Instance<Table>>>& Live() {
  static auto& live = *new std::unordered_map<const void*, std::unique_ptr<Instance<Table>>>;
  return live;
}

template <typename Table>
Table** NewInstance(Table& table, std::shared_ptr<Drive> drive) {
  auto made = std::unique_ptr<Instance<Table>>(new Instance<Table>{&table, std::move(drive)});
  Instance<Table>* instance = made.get();
  Live<Table>().emplace(instance, std::move(made));
  platform::OpenReferences()[kKind<Table>] += 1;
  return &instance->table;
}

template <typename Table>
Instance<Table>& InstanceOf(const void* self, const char* call) {
  const auto found = Live<Table>().find(self);
  if (found == Live<Table>().end()) platform::Misuse(call, "the interface is null or dead");
  return *found->second;
}

template <typename Table>
ULONG AddReference(void* self) {
  platform::OpenReferences()[kKind<Table>] += 1;
  return ++InstanceOf<Table>(self, "AddRef").references;
}

template <typename Table>
ULONG DropReference(void* self) {
  Instance<Table>& instance = InstanceOf<Table>(self, "Release");
  platform::OpenReferences()[kKind<Table>] -= 1;
  const ULONG left = --instance.references;
  if (left == 0) Live<Table>().erase(self);
  return left;
}

Drive& DriveOf(void* interface, const char* call) {
  return *InstanceOf<IOATASMARTInterface>(interface, call).drive;
}

IOReturn EnableDisable(void* interface, Boolean enable) {
  const bool done = DriveOf(interface, "SMARTEnableDisableOperations").Enable(enable != 0);
  return done ? kIOReturnSuccess : kIOReturnError;
}

IOReturn ReturnStatus(void* interface, Boolean* exceededCondition) {
  const std::optional<bool> exceeded = DriveOf(interface, "SMARTReturnStatus").ReturnStatus();
  if (!exceeded) return kIOReturnError;
  *exceededCondition = *exceeded;
  return kIOReturnSuccess;
}

IOReturn CopyBlock(const std::optional<Drive::Block>& block, void* output) {
  if (!block) return kIOReturnError;
  std::memcpy(output, block->data(), block->size());
  return kIOReturnSuccess;
}

IOReturn ReadData(void* interface, ATASMARTData* data) {
  return CopyBlock(DriveOf(interface, "SMARTReadData").ReadData(), data);
}

IOReturn ReadThresholds(void* interface, ATASMARTDataThresholds* data) {
  return CopyBlock(DriveOf(interface, "SMARTReadDataThresholds").ReadThresholds(), data);
}

IOReturn GetIdentifyData(void* interface, void* buffer, UInt32 inSize, UInt32* outSize) {
  const std::optional<Drive::Block> block = DriveOf(interface, "GetATAIdentifyData").Identify();
  if (!block) return kIOReturnError;
  *outSize = std::min(inSize, static_cast<UInt32>(block->size()));
  std::memcpy(buffer, block->data(), *outSize);
  return kIOReturnSuccess;
}

bool IsSame(CFUUIDBytes one, CFUUIDBytes other) {
  return std::memcmp(&one, &other, sizeof one) == 0;
}

HRESULT NoFurtherInterface(void* /*self*/, REFIID /*iid*/, LPVOID* /*result*/) {
  return kNoInterface;
}

HRESULT QuerySMARTInterface(void* self, REFIID iid, LPVOID* result) {
  static IOATASMARTInterface table = {nullptr,
                                      NoFurtherInterface,
                                      AddReference<IOATASMARTInterface>,
                                      DropReference<IOATASMARTInterface>,
                                      EnableDisable,
                                      ReturnStatus,
                                      ReadData,
                                      ReadThresholds,
                                      GetIdentifyData};
  PlugIn& plugIn = InstanceOf<IOCFPlugInInterface>(self, "QueryInterface");
  if (!IsSame(iid, CFUUIDGetUUIDBytes(kIOATASMARTInterfaceID)) || !plugIn.drive->Open()) {
    return kNoInterface;
  }
  *result = NewInstance(table, plugIn.drive);
  return S_OK;
}

}  // namespace

void platform::DropUserClients() {
  Live<IOATASMARTInterface>().clear();
  Live<IOCFPlugInInterface>().clear();
}

kern_return_t IOCreatePlugInInterfaceForService(io_service_t service, CFUUIDRef pluginType,
                                                CFUUIDRef interfaceType,
                                                IOCFPlugInInterface*** theInterface,
                                                SInt32* theScore) {
  static IOCFPlugInInterface table = {nullptr, QuerySMARTInterface,
                                      AddReference<IOCFPlugInInterface>,
                                      DropReference<IOCFPlugInInterface>};
  const platform::Entry& entry =
      *platform::ServicePath(service, "IOCreatePlugInInterfaceForService").back();
  if (pluginType != kIOATASMARTUserClientTypeID || interfaceType != kIOCFPlugInInterfaceID) {
    return kIOReturnUnsupported;
  }
  if (entry.drive == nullptr) return kIOReturnNoResources;
  *theInterface = NewInstance(table, entry.drive);
  *theScore = 0;
  return kIOReturnSuccess;
}

kern_return_t IODestroyPlugInInterface(IOCFPlugInInterface** interface) {
  InstanceOf<IOCFPlugInInterface>(interface, "IODestroyPlugInInterface");
  DropReference<IOCFPlugInInterface>(interface);
  return kIOReturnSuccess;
}
