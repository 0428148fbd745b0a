// Property objects, which the Ref types point to, and the references to them that the probe owns.
// The framework's calls on strings and numbers are in strings.cpp and numbers.cpp.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <string_view>
#include <unordered_map>
#include <variant>

#include "platform/ledger.h"
#include "platform/machine.h"

namespace platform {

// The types of values come first, in the order of ValueObject::Value.
enum class ObjectType : CFTypeID {
  kString,
  kNumber,
  kData,
  kDictionary,
  kBoolean,
  kArray,
  kDate,
  kMatching,
  kUUID,
  kBundle
};

class Object {
 public:
  explicit Object(ObjectType type) : type_(type) {}
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;

  ObjectType Type() const { return type_; }

 private:
  ObjectType type_;
};

// The object of a value. The value may be large, so it is not copied and has to outlive the object:
// it belongs to the machine, is a constant, or is kept until the next SetMachine. The objects of a
// dictionary's values are made when they are asked for, and belong to the dictionary's object.
class ValueObject : public Object {
 public:
  using Value = std::variant<const std::string*, const Number*, const Data*, const Dictionary*,
                             const bool*, const Array*, const std::chrono::sys_seconds*>;

  explicit ValueObject(Value value)
      : Object(static_cast<ObjectType>(value.index())), value_(value) {}
  explicit ValueObject(const Property& property)
      : ValueObject(std::visit([](const auto& value) { return Value(&value); }, property.value)) {}

  Value Borrowed() const { return value_; }

  // For a dictionary only: the object of the value under `key`, or null. It is borrowed, is the
  // same at every call, and lives as long as this one.
  const Object* Find(std::string_view key) const;

 private:
  Value value_;
  mutable std::unordered_map<const Property*, std::unique_ptr<Object>> made_;
};

// Gives the probe the only reference to `object`, entered in the ledger as `kind`.
CFTypeRef HandOut(std::unique_ptr<Object> object, ReferenceKind kind);

// Takes the probe's reference back and frees the object. It is misuse of `call` if the probe owns
// no reference: the object is null, freed already, borrowed, a constant or no object at all. A
// later object can have the address of a freed one; AddressSanitizer tells them apart.
void TakeBack(CFTypeRef object, const char* call);

inline CFTypeRef Ref(const Object* object) { return object; }

// Null is misuse of `call`. A pointer to a freed object, or to none, is not noticed here.
inline const Object& Deref(CFTypeRef ref, const char* call) {
  if (ref == nullptr) Misuse(call, "null is no object");
  return *static_cast<const Object*>(ref);
}

// The object that `ref` points to; one of another type is misuse of `call`.
template <typename T>
const T& Deref(CFTypeRef ref, const char* call) {
  const Object& object = Deref(ref, call);
  if (object.Type() != T::kType) Misuse(call, "the object is of another type");
  return static_cast<const T&>(object);
}

// The value that `ref` points to; an object of another type is misuse of `call`.
template <typename T>
const T& ValueOf(CFTypeRef ref, const char* call) {
  const Object& object = Deref(ref, call);
  ValueObject::Value value;
  if (object.Type() <= ObjectType::kDate)
    value = static_cast<const ValueObject&>(object).Borrowed();
  const T* const* found = std::get_if<const T*>(&value);
  if (found == nullptr || *found == nullptr) Misuse(call, "the object is of another type");
  return **found;
}

}  // namespace platform
