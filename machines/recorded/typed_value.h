// The value of a key that has one type only.
#pragma once

#include <string>
#include <variant>

#include "machines/recorded/recording_error.h"
#include "platform/machine.h"

namespace machines {

template <typename Type>
inline constexpr const char* kTypeName = nullptr;
template <>
inline constexpr const char* kTypeName<std::string> = "a <string>";
template <>
inline constexpr const char* kTypeName<bool> = "<true/> or <false/>";
template <>
inline constexpr const char* kTypeName<platform::Data> = "<data>";
template <>
inline constexpr const char* kTypeName<platform::Array> = "an <array>";
template <>
inline constexpr const char* kTypeName<platform::Dictionary> = "a <dict>";

// Throws RecordingError when the value of `keyed` is of another type.
template <typename Type>
Type& TypedValue(platform::KeyedProperty& keyed) {
  if (Type* value = std::get_if<Type>(&keyed.value.value)) return *value;
  throw RecordingError(Shortened(keyed.key) + " is not " + kTypeName<Type>);
}

}  // namespace machines
