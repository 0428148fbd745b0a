// The framework's numbers. It has only the conversions between types that a machine can need: from
// integers and 64-bit floating-point numbers to integers.
#include <CoreFoundation/CoreFoundation.h>

#include <bit>
#include <cstdint>
#include <cstring>

#include "platform/objects.h"

using platform::Number;
using platform::ValueOf;

namespace {

bool IsFloat32(CFNumberType type) {
  return type == kCFNumberFloat32Type || type == kCFNumberFloatType;
}

bool IsFloat64(CFNumberType type) {
  return type == kCFNumberFloat64Type || type == kCFNumberDoubleType;
}

// Stores the number as T and returns whether its value survives.
template <typename T>
bool StoreInteger(const Number& number, void* output) {
  auto whole = static_cast<std::int64_t>(number.bits);
  bool survives = !IsFloat32(number.type);
  if (IsFloat64(number.type)) {
    const auto real = std::bit_cast<double>(number.bits);
    whole = real >= -0x1p63 && real < 0x1p63 ? static_cast<std::int64_t>(real) : 0;
    survives = static_cast<double>(whole) == real;
  }
  const T stored = static_cast<T>(whole);
  std::memcpy(output, &stored, sizeof stored);
  return survives && stored == whole;
}

template <typename Bits>
bool StoreBits(const Number& number, void* output) {
  const Bits stored = static_cast<Bits>(number.bits);
  std::memcpy(output, &stored, sizeof stored);
  return true;
}

}  // namespace

CFTypeID CFNumberGetTypeID() { return static_cast<CFTypeID>(platform::ObjectType::kNumber); }

CFNumberType CFNumberGetType(CFNumberRef number) {
  return ValueOf<Number>(number, "CFNumberGetType").type;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
  const auto& source = ValueOf<Number>(number, "CFNumberGetValue");
  switch (type) {
    case kCFNumberSInt8Type:
    case kCFNumberCharType:
      return StoreInteger<SInt8>(source, value);
    case kCFNumberSInt16Type:
    case kCFNumberShortType:
      return StoreInteger<SInt16>(source, value);
    case kCFNumberSInt32Type:
    case kCFNumberIntType:
      return StoreInteger<SInt32>(source, value);
    case kCFNumberSInt64Type:
    case kCFNumberLongLongType:
      return StoreInteger<SInt64>(source, value);
    case kCFNumberLongType:
    case kCFNumberCFIndexType:
      return StoreInteger<long>(source, value);
    case kCFNumberFloat32Type:
    case kCFNumberFloatType:
      return IsFloat32(source.type) && StoreBits<std::uint32_t>(source, value);
    case kCFNumberFloat64Type:
    case kCFNumberDoubleType:
      return IsFloat64(source.type) && StoreBits<std::uint64_t>(source, value);
    default:
      return false;
  }
}
