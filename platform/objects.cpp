#include "platform/objects.h"

#include "platform/process_end.h"

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

struct Maker {
  using Result = std::unique_ptr<Object>;
  Result operator()(const std::string& text) const { return std::make_unique<StringObject>(text); }
  Result operator()(const Number& number) const { return std::make_unique<NumberObject>(number); }
  Result operator()(const Data& data) const { return std::make_unique<DataObject>(data); }
  Result operator()(const Dictionary& values) const {
    return std::make_unique<DictionaryObject>(values);
  }
  // The probe only asks what types these are.
  Result operator()(bool) const { return std::make_unique<Object>(ObjectType::kBoolean); }
  Result operator()(const Array&) const { return std::make_unique<Object>(ObjectType::kArray); }
  Result operator()(const Date&) const { return std::make_unique<Object>(ObjectType::kDate); }
};

}  // namespace

std::unique_ptr<Object> MakeObject(const Property& property) {
  return std::visit(Maker(), property.value);
}

const Object* DictionaryObject::Get(std::string_view key) const {
  const Property* property = Find(values_, key);
  if (property == nullptr) return nullptr;
  std::unique_ptr<Object>& object = made_[property];
  if (!object) object = MakeObject(*property);
  return object.get();
}

CFTypeRef HandOut(std::unique_ptr<Object> object, ReferenceKind kind) {
  const CFTypeRef ref = Ref(object.get());
  Handouts().emplace(ref, Handout{std::move(object), kind});
  OpenReferences()[kind] += 1;
  return ref;
}

void TakeBack(CFTypeRef object, const char* call) {
  const auto handout = Handouts().find(object);
  if (handout == Handouts().end()) Misuse(call, "the caller owns no reference to this object");
  OpenReferences()[handout->second.kind] -= 1;
  Handouts().erase(handout);
}

void DropObjects() { Handouts().clear(); }

}  // namespace platform

void CFRelease(CFTypeRef object) { platform::TakeBack(object, "CFRelease"); }

CFTypeID CFGetTypeID(CFTypeRef object) {
  return static_cast<CFTypeID>(platform::Deref(object, "CFGetTypeID").type());
}
