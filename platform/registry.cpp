// The calls on the registry, for matching, iteration and properties, and the handles that they use.
#include "platform/registry.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include "platform/objects.h"

namespace platform {
namespace {

// An entry's place among all entries of the machine. They are in document order: the descendants of
// an entry follow it, up to `end`.
struct Node {
  const Entry* entry;
  std::size_t parent;  // a root is its own parent
  std::size_t end;
};

const Property kNothing;  // stands for the result of a search that found nothing

// The machine's entries, and the results of the searches from each. Thousands of devices may have
// thousands of entries above or below them in common, so no search is made twice.
class Tree {
 public:
  Tree() {
    for (const Entry& root : ThisMachine().roots) Add(root, nodes.size());
  }

  // The value of the first entry that has the key, or null. It searches the node and then the
  // entries above it if `upwards` is set, else the node and then those below it.
  const Property* Find(std::size_t node, std::string_view key, bool upwards) {
    auto& found = found_.try_emplace({std::string(key), upwards}, nodes.size()).first->second;
    const Property* first = Search(node, key, upwards, found);
    return first == &kNothing ? nullptr : first;
  }

  std::vector<Node> nodes;

 private:
  using Found = std::vector<const Property*>;  // for each node; null: not searched yet

  void Add(const Entry& entry, std::size_t parent) {
    const std::size_t node = nodes.size();
    nodes.push_back({&entry, parent, 0});
    for (const Entry& child : entry.children) Add(child, node);
    nodes[node].end = nodes.size();
  }

  const Property* Search(std::size_t node, std::string_view key, bool upwards, Found& found) {
    if (found[node] != nullptr) return found[node];
    const auto& [entry, parent, end] = nodes[node];
    const Property* own = platform::Find(entry->properties, key);
    const Property* first = own != nullptr ? own : &kNothing;
    if (first == &kNothing && upwards && parent != node) first = Search(parent, key, true, found);
    std::size_t child = upwards ? end : node + 1;
    for (; first == &kNothing && child < end; child = nodes[child].end) {
      first = Search(child, key, false, found);
    }
    return found[node] = first;
  }

  std::map<std::pair<std::string, bool>, Found> found_;  // by the key, and whether upwards
};

// Never destroyed, like the handles.
std::unique_ptr<Tree>& KnownTree() {
  static auto& tree = *new std::unique_ptr<Tree>;
  return tree;
}

Tree& TheTree() {
  if (!KnownTree()) KnownTree() = std::make_unique<Tree>();
  return *KnownTree();
}

// Both hold places among the tree's nodes.
struct Service {
  std::size_t node;
};
struct Iterator {
  std::vector<std::size_t> matches;  // as they were found when it was made
  std::size_t next = 0;              // the match to hand out next; matches.size() at the end
};
using RegistryObject = std::variant<Service, Iterator>;

// Never destroyed, so that what the probe does not release is no leak.
std::unordered_map<io_object_t, RegistryObject>& Handles() {
  static auto& handles = *new std::unordered_map<io_object_t, RegistryObject>;
  return handles;
}

// No number is ever used again, so that a stale handle is never taken for another.
io_object_t NewHandle(RegistryObject object) {
  static io_object_t last = 0;
  Handles().emplace(++last, std::move(object));
  return last;
}

template <typename T>
T& ObjectOf(io_object_t handle, const char* call) {
  const auto found = Handles().find(handle);
  if (found == Handles().end()) Misuse(call, "the handle is null or dead");
  T* object = std::get_if<T>(&found->second);
  if (object == nullptr) Misuse(call, "the handle is of another kind");
  return *object;
}

}  // namespace

const Entry& EntryOf(io_service_t service, const char* call) {
  return *TheTree().nodes[ObjectOf<Service>(service, call).node].entry;
}

void CountRegistryHandles(Ledger& ledger) {
  for (const auto& [handle, object] : Handles()) {
    const bool isService = std::holds_alternative<Service>(object);
    ledger[isService ? ReferenceKind::kService : ReferenceKind::kIterator] += 1;
  }
}

void DropRegistryHandles() { Handles().clear(); }

void DropTree() { KnownTree().reset(); }

}  // namespace platform

using platform::Deref;
using platform::Entry;
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

// The places of the entries that match.
std::vector<std::size_t> Matches(const MatchingObject& wanted) {
  const std::vector<platform::Node>& nodes = platform::TheTree().nodes;
  const Entry* only = platform::OnlyDevice();
  std::vector<std::size_t> matches;
  if (only != nullptr && !wanted.Matches(*only)) return matches;
  for (std::size_t node = 0; node < nodes.size(); node++) {
    const Entry* entry = nodes[node].entry;
    if (only != nullptr ? entry == only : wanted.Matches(*entry)) matches.push_back(node);
  }
  return matches;
}

const Property* Search(std::size_t node, std::string_view key, IOOptionBits options) {
  platform::Tree& tree = platform::TheTree();
  const bool isRecursive = (options & kIORegistryIterateRecursively) != 0;
  if (isRecursive) return tree.Find(node, key, (options & kIORegistryIterateParents) != 0);
  return platform::Find(tree.nodes[node].entry->properties, key);
}

}  // namespace

CFMutableDictionaryRef IOServiceNameMatching(const char* name) { return NewMatching(name, ""); }

CFMutableDictionaryRef IOServiceMatching(const char* name) { return NewMatching("", name); }

kern_return_t IOServiceGetMatchingServices(mach_port_t /*masterPort*/, CFDictionaryRef matching,
                                           io_iterator_t* existing) {
  static constexpr const char* kCall = "IOServiceGetMatchingServices";
  const auto& wanted = Deref<MatchingObject>(matching, kCall);
  platform::Iterator found{Matches(wanted)};
  platform::TakeBack(matching, kCall);
  *existing = found.matches.empty() ? 0 : platform::NewHandle(std::move(found));
  return kIOReturnSuccess;
}

io_object_t IOIteratorNext(io_iterator_t iterator) {
  if (iterator == 0) return 0;
  auto& state = platform::ObjectOf<platform::Iterator>(iterator, "IOIteratorNext");
  if (state.next == state.matches.size()) return 0;
  return platform::NewHandle(platform::Service{state.matches[state.next++]});
}

kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry,
                                                CFMutableDictionaryRef* properties,
                                                CFAllocatorRef /*allocator*/,
                                                IOOptionBits /*options*/) {
  const Entry& known = platform::EntryOf(entry, "IORegistryEntryCreateCFProperties");
  *properties = HandOutDictionary(std::make_unique<platform::ValueObject>(&known.properties),
                                  ReferenceKind::kPropertyDictionary);
  return kIOReturnSuccess;
}

CFTypeRef IORegistryEntrySearchCFProperty(io_registry_entry_t entry, const io_name_t plane,
                                          CFStringRef key, CFAllocatorRef /*allocator*/,
                                          IOOptionBits options) {
  static constexpr const char* kCall = "IORegistryEntrySearchCFProperty";
  const std::size_t node = platform::ObjectOf<platform::Service>(entry, kCall).node;
  if (std::string_view(plane) != kIOServicePlane) return nullptr;  // the machine has no other
  const Property* found = Search(node, platform::ValueOf<std::string>(key, kCall), options);
  if (found == nullptr) return nullptr;
  return platform::HandOut(std::make_unique<platform::ValueObject>(*found),
                           ReferenceKind::kFoundValue);
}

kern_return_t IOObjectRelease(io_object_t object) {
  if (platform::Handles().erase(object) == 0) {
    platform::Misuse("IOObjectRelease", "the handle is null or dead");
  }
  return kIOReturnSuccess;
}
