// The framework's constant UUIDs.
#include <CoreFoundation/CoreFoundation.h>

#include <array>
#include <bit>
#include <map>

#include "platform/objects.h"

namespace {

using Bytes = std::array<UInt8, 16>;

struct UUIDObject : platform::Object {
  static constexpr platform::ObjectType kType = platform::ObjectType::kUUID;
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
