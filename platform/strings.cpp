// The framework's strings: constants, conversions to and from 8-bit text, and those of the
// main bundle.
#include <Carbon/Carbon.h>
#include <utf8.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/objects.h"

using platform::ValueObject;
using platform::ValueOf;

namespace {

// This layer's strings are UTF-8, and so are the 8-bit encodings of the system and
// of the application.
constexpr CFStringEncoding kEncodingUTF8 = 0x08000100;

constexpr int kUnwrittenByte = 0xA5;

std::size_t AsciiPrefix(std::string_view text) {
  const auto isBeyond = [](char c) { return (c & 0x80) != 0; };
  return static_cast<std::size_t>(std::ranges::find_if(text, isBeyond) - text.begin());
}

// How many bytes of `text`, from its start, can be converted to `encoding`.
std::size_t ConvertiblePrefix(std::string_view text, CFStringEncoding encoding) {
  if (encoding == kEncodingUTF8) return text.size();
  return encoding == kCFStringEncodingASCII ? AsciiPrefix(text) : 0;
}

// The texts that data stand for; nullopt for data that are no text. Data may be long and be asked
// for by every device, so they are converted once.
std::unordered_map<const platform::Data*, std::optional<std::string>>& TextsOfData() {
  static auto& texts = *new std::unordered_map<const platform::Data*, std::optional<std::string>>;
  return texts;
}

CFStringRef HandOutString(const std::string& text) {
  return static_cast<CFStringRef>(
      platform::HandOut(std::make_unique<ValueObject>(&text), platform::ReferenceKind::kString));
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
  static auto& constants = *new std::map<std::string, std::unique_ptr<ValueObject>, std::less<>>;
  auto known = constants.find(std::string_view(text));
  if (known == constants.end()) {
    known = constants.emplace(text, nullptr).first;
    known->second = std::make_unique<ValueObject>(&known->first);
  }
  return static_cast<CFStringRef>(platform::Ref(known->second.get()));
}

CFTypeID CFStringGetTypeID() { return static_cast<CFTypeID>(platform::ObjectType::kString); }

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding) {
  const std::string_view text = ValueOf<std::string>(string, "CFStringGetCString");
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
  const auto& bytes = ValueOf<platform::Data>(data, "CFStringCreateFromExternalRepresentation");
  if (encoding != kEncodingUTF8) return nullptr;
  const auto [text, isNew] = TextsOfData().try_emplace(&bytes);
  if (isNew && utf8::is_valid(bytes.begin(), bytes.end())) {
    text->second.emplace(bytes.begin(), bytes.end());
  }
  return text->second ? HandOutString(*text->second) : nullptr;
}

CFBundleRef CFBundleGetMainBundle() {
  static auto& bundle = *new BundleObject;
  return static_cast<CFBundleRef>(static_cast<void*>(static_cast<platform::Object*>(&bundle)));
}

CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                        CFStringRef /*tableName*/) {
  static constexpr const char* kCall = "CFBundleCopyLocalizedString";
  platform::Deref<BundleObject>(bundle, kCall);
  const auto& strings = platform::ThisMachine().mainBundleStrings;
  const auto translation = strings.find(ValueOf<std::string>(key, kCall));
  return HandOutString(translation != strings.end() ? translation->second
                                                    : ValueOf<std::string>(value, kCall));
}

void platform::DropTexts() { TextsOfData().clear(); }
