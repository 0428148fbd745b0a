#include "platform/registry_handles.h"

#include <unordered_map>
#include <utility>
#include <variant>

#include "platform/ledger.h"
#include "platform/misuse.h"
#include "platform/process_end.h"

namespace platform {
namespace {

using RegistryObject = std::variant<EntryPath, Iterator>;

// Never destroyed, so that what the probe does not release is no leak.
std::unordered_map<io_object_t, RegistryObject>& Handles() {
  static auto& handles = *new std::unordered_map<io_object_t, RegistryObject>;
  return handles;
}

io_object_t NewHandle(RegistryObject object) {
  static io_object_t last = 0;
  Handles().emplace(++last, std::move(object));
  return last;
}

RegistryObject& ObjectOf(io_object_t handle, const char* call) {
  const auto found = Handles().find(handle);
  if (found == Handles().end()) Misuse(call, "the handle is null or dead");
  return found->second;
}

template <typename T>
T& ObjectOf(io_object_t handle, const char* call) {
  T* object = std::get_if<T>(&ObjectOf(handle, call));
  if (object == nullptr) Misuse(call, "the handle is of another kind");
  return *object;
}

}  // namespace

io_service_t NewService(EntryPath path) {
  OpenReferences()[ReferenceKind::kService] += 1;
  return NewHandle(std::move(path));
}

io_iterator_t NewIterator(std::vector<EntryPath> matches) {
  OpenReferences()[ReferenceKind::kIterator] += 1;
  return NewHandle(Iterator{std::move(matches)});
}

const EntryPath& ServicePath(io_service_t service, const char* call) {
  return ObjectOf<EntryPath>(service, call);
}

Iterator& IteratorState(io_iterator_t iterator, const char* call) {
  return ObjectOf<Iterator>(iterator, call);
}

void DropRegistryHandles() { Handles().clear(); }

}  // namespace platform

kern_return_t IOObjectRelease(io_object_t object) {
  using platform::ReferenceKind;
  const bool isService =
      std::holds_alternative<platform::EntryPath>(platform::ObjectOf(object, "IOObjectRelease"));
  platform::OpenReferences()[isService ? ReferenceKind::kService : ReferenceKind::kIterator] -= 1;
  platform::Handles().erase(object);
  return kIOReturnSuccess;
}
