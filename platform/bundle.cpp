// The main bundle and its localised strings.
#include <CoreFoundation/CoreFoundation.h>

#include "platform/objects.h"

using platform::Deref;
using platform::StringObject;

namespace {

struct BundleObject : platform::Object {
  static constexpr platform::ObjectType kType = platform::ObjectType::kBundle;
  BundleObject() : Object(kType) {}
};

}  // namespace

CFBundleRef CFBundleGetMainBundle() {
  static auto& bundle = *new BundleObject;
  return static_cast<CFBundleRef>(static_cast<void*>(static_cast<platform::Object*>(&bundle)));
}

CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                        CFStringRef /*tableName*/) {
  static constexpr const char* kCall = "CFBundleCopyLocalizedString";
  Deref<BundleObject>(bundle, kCall);
  const auto& strings = platform::ThisMachine().mainBundleStrings;
  const auto translation = strings.find(Deref<StringObject>(key, kCall).text);
  const std::string& text =
      translation != strings.end() ? translation->second : Deref<StringObject>(value, kCall).text;
  return static_cast<CFStringRef>(
      platform::HandOut(std::make_unique<StringObject>(text), platform::ReferenceKind::kString));
}
