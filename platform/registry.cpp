// What is asked of the registry: matching, iteration and properties; and the handles for it.
#include "platform/registry.h"

#include <IOKit/IOKitLib.h>

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>

#include "platform/objects.h"

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

using platform::Deref;
using platform::DictionaryObject;
using platform::Entry;
using platform::EntryPath;
using platform::Property;
using platform::ReferenceKind;

namespace {

// What a matching dictionary asks for; an empty text is matched by any entry.
struct MatchingObject : platform::Object {
  static constexpr platform::ObjectType kType = platform::ObjectType::kMatching;
  MatchingObject(const char* name, const char* className)
      : Object(kType), wantedName(name), wantedClass(className) {}

  bool Matches(const Entry& entry) const {
    return (wantedName.empty() || entry.name == wantedName) &&
           (wantedClass.empty() || entry.className == wantedClass);
  }

  std::string wantedName;
  std::string wantedClass;
};

CFMutableDictionaryRef HandOutDictionary(std::unique_ptr<platform::Object> dictionary,
                                         ReferenceKind kind) {
  return static_cast<CFMutableDictionaryRef>(
      const_cast<void*>(platform::HandOut(std::move(dictionary), kind)));
}

CFMutableDictionaryRef NewMatching(const char* name, const char* className) {
  return HandOutDictionary(std::make_unique<MatchingObject>(name, className),
                           ReferenceKind::kMatchingDictionary);
}

// Appends what matches of an entry and its descendants, in document order.
// `path` leads to the entry's parent.
void CollectMatches(const Entry& entry, const MatchingObject& matching, EntryPath& path,
                    std::vector<EntryPath>& matches) {
  path.push_back(&entry);
  if (matching.Matches(entry)) matches.push_back(path);
  for (const Entry& child : entry.children) CollectMatches(child, matching, path, matches);
  path.pop_back();
}

const Property* FindUpwards(const EntryPath& path, std::string_view key) {
  for (std::size_t above = path.size(); above > 0; above--) {
    if (const Property* found = Find(path[above - 1]->properties, key)) return found;
  }
  return nullptr;
}

const Property* FindDownwards(const Entry& entry, std::string_view key) {
  if (const Property* found = Find(entry.properties, key)) return found;
  for (const Entry& child : entry.children) {
    if (const Property* found = FindDownwards(child, key)) return found;
  }
  return nullptr;
}

const Property* Search(const EntryPath& path, std::string_view key, IOOptionBits options) {
  const bool recursive = (options & kIORegistryIterateRecursively) != 0;
  const bool parents = (options & kIORegistryIterateParents) != 0;
  if (!recursive) return Find(path.back()->properties, key);
  return parents ? FindUpwards(path, key) : FindDownwards(*path.back(), key);
}

}  // namespace

CFMutableDictionaryRef IOServiceNameMatching(const char* name) { return NewMatching(name, ""); }

CFMutableDictionaryRef IOServiceMatching(const char* name) { return NewMatching("", name); }

kern_return_t IOServiceGetMatchingServices(mach_port_t /*masterPort*/, CFDictionaryRef matching,
                                           io_iterator_t* existing) {
  static constexpr const char* kCall = "IOServiceGetMatchingServices";
  const auto& wanted = Deref<MatchingObject>(matching, kCall);
  EntryPath path;
  std::vector<EntryPath> matches;
  for (const Entry& root : platform::ThisMachine().roots) {
    CollectMatches(root, wanted, path, matches);
  }
  platform::TakeBack(matching, kCall);
  *existing = platform::NewIterator(std::move(matches));
  return kIOReturnSuccess;
}

io_object_t IOIteratorNext(io_iterator_t iterator) {
  platform::Iterator& state = platform::IteratorState(iterator, "IOIteratorNext");
  if (state.next == state.matches.size()) return 0;
  return platform::NewService(state.matches[state.next++]);
}

kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry,
                                                CFMutableDictionaryRef* properties,
                                                CFAllocatorRef /*allocator*/,
                                                IOOptionBits /*options*/) {
  const EntryPath& path = platform::ServicePath(entry, "IORegistryEntryCreateCFProperties");
  *properties = HandOutDictionary(std::make_unique<DictionaryObject>(path.back()->properties),
                                  ReferenceKind::kPropertyDictionary);
  return kIOReturnSuccess;
}

CFTypeRef IORegistryEntrySearchCFProperty(io_registry_entry_t entry, const io_name_t plane,
                                          CFStringRef key, CFAllocatorRef /*allocator*/,
                                          IOOptionBits options) {
  static constexpr const char* kCall = "IORegistryEntrySearchCFProperty";
  const EntryPath& path = platform::ServicePath(entry, kCall);
  if (std::string_view(plane) != kIOServicePlane) return nullptr;  // the machine has no other
  const Property* found = Search(path, Deref<platform::StringObject>(key, kCall).text, options);
  if (found == nullptr) return nullptr;
  return platform::HandOut(platform::MakeObject(*found), ReferenceKind::kFoundValue);
}

kern_return_t IOObjectRelease(io_object_t object) {
  using platform::ReferenceKind;
  const bool isService =
      std::holds_alternative<platform::EntryPath>(platform::ObjectOf(object, "IOObjectRelease"));
  platform::OpenReferences()[isService ? ReferenceKind::kService : ReferenceKind::kIterator] -= 1;
  platform::Handles().erase(object);
  return kIOReturnSuccess;
}
