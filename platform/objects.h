// Property objects, which the Ref types point to, and the references to them that the
// probe owns. The framework's calls on strings and numbers have a source of their own.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <string_view>
#include <unordered_map>

#include "platform/ledger.h"
#include "platform/machine.h"

namespace platform {

enum class ObjectType : CFTypeID {
  kString = 1,
  kNumber,
  kData,
  kDictionary,
  kMatching,
  kBoolean,
  kArray,
  kDate,
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

// Text and data are not copied, as large as they may be: an object refers to the machine's
// values, or to a literal, which have to outlive it.
struct StringObject : Object {
  static constexpr ObjectType kType = ObjectType::kString;
  explicit StringObject(std::string_view utf8) : Object(kType), text(utf8) {}
  std::string_view text;
};

struct NumberObject : Object {
  static constexpr ObjectType kType = ObjectType::kNumber;
  explicit NumberObject(Number value) : Object(kType), number(value) {}
  Number number;
};

struct DataObject : Object {
  static constexpr ObjectType kType = ObjectType::kData;
  explicit DataObject(const Data& data) : Object(kType), bytes(data) {}
  const Data& bytes;
};

// Refers to a dictionary of the machine. The objects of its values are made when
// they are asked for and belong to it. The machine's dictionary must outlive it.
class DictionaryObject : public Object {
 public:
  static constexpr ObjectType kType = ObjectType::kDictionary;
  explicit DictionaryObject(const Dictionary& values) : Object(kType), values_(values) {}

  // The object of the value under `key`, borrowed, or null. The same one at every call, alive
  // as long as this dictionary.
  const Object* Find(std::string_view key) const;

 private:
  const Dictionary& values_;
  mutable std::unordered_map<const Property*, std::unique_ptr<Object>> made_;
};

// An object of `property`, never null, which may go on referring to it. Booleans, arrays and
// dates have a type and no value.
std::unique_ptr<Object> MakeObject(const Property& property);

// Gives the probe the only reference to `object`, entered in the ledger as `kind`.
CFTypeRef HandOut(std::unique_ptr<Object> object, ReferenceKind kind);

// Takes the probe's reference back and frees the object. Misuse of `call` when the
// probe owns none: null, freed already, borrowed, a constant, no object at all. A
// freed object's address can return as another's; AddressSanitizer tells them apart.
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

}  // namespace platform
