#include "platform/objects.h"

#include <algorithm>
#include <array>
#include <bit>
#include <map>
#include <utility>

using platform::Deref;
using platform::ObjectType;
using platform::ValueOf;

namespace platform {
namespace {

struct Handout {
  std::unique_ptr<Object> object;
  ReferenceKind kind;
};

// Never destroyed, so that what the probe does not release is no leak.
std::unordered_map<CFTypeRef, Handout>& Handouts() {
  static auto& handouts = *new std::unordered_map<CFTypeRef, Handout>;
  return handouts;
}

}  // namespace

const Object* ValueObject::Find(std::string_view key) const {
  const Property* found = platform::Find(*std::get<const Dictionary*>(value_), key);
  if (found == nullptr) return nullptr;
  std::unique_ptr<Object>& object = made_[found];
  if (!object) object = std::make_unique<ValueObject>(*found);
  return object.get();
}

CFTypeRef HandOut(std::unique_ptr<Object> object, ReferenceKind kind) {
  const CFTypeRef ref = Ref(object.get());
  Handouts().emplace(ref, Handout{std::move(object), kind});
  return ref;
}

void TakeBack(CFTypeRef object, const char* call) {
  if (Handouts().erase(object) == 0) Misuse(call, "the caller owns no reference to this object");
}

void CountObjects(Ledger& ledger) {
  for (const auto& [ref, handout] : Handouts()) ledger[handout.kind] += 1;
}

void DropObjects() { Handouts().clear(); }

}  // namespace platform

void CFRelease(CFTypeRef object) { platform::TakeBack(object, "CFRelease"); }

CFTypeID CFGetTypeID(CFTypeRef object) {
  return static_cast<CFTypeID>(platform::Deref(object, "CFGetTypeID").Type());
}

CFTypeID CFDataGetTypeID() { return static_cast<CFTypeID>(ObjectType::kData); }

CFIndex CFDataGetLength(CFDataRef data) {
  return static_cast<CFIndex>(ValueOf<platform::Data>(data, "CFDataGetLength").size());
}

void CFDataGetBytes(CFDataRef data, CFRange range, UInt8* buffer) {
  const auto& bytes = ValueOf<platform::Data>(data, "CFDataGetBytes");
  const auto size = static_cast<CFIndex>(bytes.size());
  if (range.location < 0 || range.length < 0 || range.length > size ||
      range.location > size - range.length) {
    platform::Misuse("CFDataGetBytes", "the range is outside the data");
  }
  std::copy_n(bytes.begin() + range.location, range.length, buffer);
}

CFTypeID CFDictionaryGetTypeID() { return static_cast<CFTypeID>(ObjectType::kDictionary); }

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
  static constexpr const char* kCall = "CFDictionaryGetValue";
  ValueOf<platform::Dictionary>(dictionary, kCall);
  const auto& object = static_cast<const platform::ValueObject&>(Deref(dictionary, kCall));
  return platform::Ref(object.Find(ValueOf<std::string>(key, kCall)));
}

Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, const void* key,
                                      const void** value) {
  const void* found = CFDictionaryGetValue(dictionary, key);
  if (found == nullptr) return false;
  *value = found;
  return true;
}

namespace {

using Bytes = std::array<UInt8, 16>;

struct UUIDObject : platform::Object {
  static constexpr ObjectType kType = ObjectType::kUUID;
  explicit UUIDObject(const Bytes& b) : Object(kType), bytes(b) {}
  Bytes bytes;
};

}  // namespace

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef /*allocator*/, UInt8 byte0, UInt8 byte1,
                                         UInt8 byte2, UInt8 byte3, UInt8 byte4, UInt8 byte5,
                                         UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9,
                                         UInt8 byte10, UInt8 byte11, UInt8 byte12, UInt8 byte13,
                                         UInt8 byte14, UInt8 byte15) {
  static auto& constants = *new std::map<Bytes, UUIDObject>;
  const Bytes bytes = {byte0, byte1, byte2,  byte3,  byte4,  byte5,  byte6,  byte7,
                       byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15};
  return static_cast<CFUUIDRef>(platform::Ref(&constants.try_emplace(bytes, bytes).first->second));
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid) {
  return std::bit_cast<CFUUIDBytes>(platform::Deref<UUIDObject>(uuid, "CFUUIDGetUUIDBytes").bytes);
}
