// The framework's numbers and the conversions between their types.
#include <CoreFoundation/CoreFoundation.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <variant>

#include "platform/objects.h"

using platform::Deref;
using platform::Number;
using platform::NumberObject;

namespace {

using Value = std::variant<std::monostate, std::int64_t, double>;

Value ValueOf(const Number& number) {
  switch (number.type) {
    case kCFNumberFloat32Type:
    case kCFNumberFloatType:
      return double{std::bit_cast<float>(static_cast<std::uint32_t>(number.bits))};
    case kCFNumberFloat64Type:
    case kCFNumberDoubleType:
      return std::bit_cast<double>(number.bits);
    default:
      if (number.type < kCFNumberSInt8Type || number.type > kCFNumberCFIndexType) return {};
      return static_cast<std::int64_t>(number.bits);
  }
}

template <typename Integer>
bool IsInRange(double value) {
  const auto least = static_cast<double>(std::numeric_limits<Integer>::min());
  return value >= least && value < -least;
}

// The whole part of `value`, or the end of the type that it lies beyond; not a
// number gives 0.
template <typename Integer>
Integer Truncated(double value) {
  using Limits = std::numeric_limits<Integer>;
  if (std::isnan(value)) return 0;
  if (!IsInRange<Integer>(value)) return value < 0 ? Limits::min() : Limits::max();
  return static_cast<Integer>(value);
}

// Each stores `value` as T, or what is left of it, and tells whether it survives.

template <typename T>
bool Store(std::int64_t value, void* output) {
  const T stored = static_cast<T>(value);
  std::memcpy(output, &stored, sizeof stored);
  if constexpr (std::is_floating_point_v<T>) {
    return IsInRange<std::int64_t>(stored) && static_cast<std::int64_t>(stored) == value;
  } else {
    return stored == value;
  }
}

template <typename T>
bool Store(double value, void* output) {
  if constexpr (std::is_floating_point_v<T>) {
    const T stored = static_cast<T>(value);
    std::memcpy(output, &stored, sizeof stored);
    return std::isnan(value) || static_cast<double>(stored) == value;
  } else {
    const T stored = Truncated<T>(value);
    std::memcpy(output, &stored, sizeof stored);
    return IsInRange<T>(value) && static_cast<double>(stored) == value;
  }
}

template <typename T>
bool Store(const Value& value, void* output) {
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return Store<T>(*integer, output);
  if (const auto* real = std::get_if<double>(&value)) return Store<T>(*real, output);
  return false;
}

}  // namespace

CFTypeID CFNumberGetTypeID() { return static_cast<CFTypeID>(NumberObject::kType); }

CFNumberType CFNumberGetType(CFNumberRef number) {
  return Deref<NumberObject>(number, "CFNumberGetType").number.type;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
  const Value source = ValueOf(Deref<NumberObject>(number, "CFNumberGetValue").number);
  switch (type) {
    case kCFNumberSInt8Type:
    case kCFNumberCharType:
      return Store<SInt8>(source, value);
    case kCFNumberSInt16Type:
    case kCFNumberShortType:
      return Store<SInt16>(source, value);
    case kCFNumberSInt32Type:
    case kCFNumberIntType:
    case kCFNumberLongType:  // 32 bits wide on the platform
      return Store<SInt32>(source, value);
    case kCFNumberSInt64Type:
    case kCFNumberLongLongType:
      return Store<SInt64>(source, value);
    case kCFNumberFloat32Type:
    case kCFNumberFloatType:
      return Store<Float32>(source, value);
    case kCFNumberFloat64Type:
    case kCFNumberDoubleType:
      return Store<Float64>(source, value);
    case kCFNumberCFIndexType:
      return Store<CFIndex>(source, value);
    default:
      return false;
  }
}
