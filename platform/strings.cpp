// The framework's strings: constants, conversions to and from 8-bit text, and those of the
// main bundle.
#include <Carbon/Carbon.h>
#include <utf8.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/objects.h"

using platform::Deref;
using platform::StringObject;

namespace {

// This layer's strings are UTF-8, and so are the 8-bit encodings of the system and
// of the application.
constexpr CFStringEncoding kEncodingUTF8 = 0x08000100;

constexpr int kUnwrittenByte = 0xA5;

std::size_t AsciiPrefix(std::string_view text) {
  const auto isBeyond = [](char c) { return (c & 0x80) != 0; };
  return static_cast<std::size_t>(std::ranges::find_if(text, isBeyond) - text.begin());
}

// How many bytes of `text` have a form in `encoding`.
std::size_t ConvertiblePrefix(std::string_view text, CFStringEncoding encoding) {
  if (encoding == kEncodingUTF8) return text.size();
  return encoding == kCFStringEncodingASCII ? AsciiPrefix(text) : 0;
}

// Whether data are text. They may be long, and those of every device, so it is found out once.
std::unordered_map<const platform::Data*, bool>& KnownTexts() {
  static auto& texts = *new std::unordered_map<const platform::Data*, bool>;
  return texts;
}

bool IsText(const platform::Data& bytes) {
  const auto [known, isNew] = KnownTexts().try_emplace(&bytes);
  if (isNew) known->second = utf8::is_valid(bytes.begin(), bytes.end());
  return known->second;
}

// What a failed conversion leaves in the buffer: part of the text, and no NUL.
void LeavePartialText(std::string_view prefix, char* buffer, std::size_t size) {
  std::memset(buffer, kUnwrittenByte, size);
  prefix.copy(buffer, size);
}

struct BundleObject : platform::Object {
  static constexpr platform::ObjectType kType = platform::ObjectType::kBundle;
  BundleObject() : Object(kType) {}
};

}  // namespace

CFStringRef PlatformConstantString(const char* text) {
  static auto& constants = *new std::unordered_map<std::string_view, std::unique_ptr<StringObject>>;
  const auto known = constants.find(text);
  if (known != constants.end()) return static_cast<CFStringRef>(platform::Ref(known->second.get()));
  auto made = std::make_unique<StringObject>(text);
  const std::string_view key = made->text;
  return static_cast<CFStringRef>(
      platform::Ref(constants.emplace(key, std::move(made)).first->second.get()));
}

CFTypeID CFStringGetTypeID() { return static_cast<CFTypeID>(StringObject::kType); }

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding) {
  const std::string_view text = Deref<StringObject>(string, "CFStringGetCString").text;
  if (bufferSize <= 0) return false;
  const auto size = static_cast<std::size_t>(bufferSize);
  const std::size_t convertible = ConvertiblePrefix(text.substr(0, size), encoding);
  if (convertible < text.size() || convertible == size) {
    LeavePartialText(text.substr(0, convertible), buffer, size);
    return false;
  }
  text.copy(buffer, size);
  buffer[text.size()] = '\0';
  return true;
}

CFStringEncoding CFStringGetSystemEncoding() { return kEncodingUTF8; }
TextEncoding GetApplicationTextEncoding() { return kEncodingUTF8; }

CFStringRef CFStringCreateFromExternalRepresentation(CFAllocatorRef /*allocator*/, CFDataRef data,
                                                     CFStringEncoding encoding) {
  const platform::Data& bytes =
      Deref<platform::DataObject>(data, "CFStringCreateFromExternalRepresentation").bytes;
  if (encoding != kEncodingUTF8 || !IsText(bytes)) return nullptr;
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return static_cast<CFStringRef>(
      platform::HandOut(std::make_unique<StringObject>(text), platform::ReferenceKind::kString));
}

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
  const std::string_view text = translation != strings.end()
                                    ? std::string_view(translation->second)
                                    : Deref<StringObject>(value, kCall).text;
  return static_cast<CFStringRef>(
      platform::HandOut(std::make_unique<StringObject>(text), platform::ReferenceKind::kString));
}

void platform::DropTexts() { KnownTexts().clear(); }
