// The framework's data and dictionaries.
#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>

#include "platform/objects.h"

using platform::DataObject;
using platform::Deref;
using platform::DictionaryObject;
using platform::StringObject;

CFTypeID CFDataGetTypeID() { return static_cast<CFTypeID>(DataObject::kType); }

CFIndex CFDataGetLength(CFDataRef data) {
  return static_cast<CFIndex>(Deref<DataObject>(data, "CFDataGetLength").bytes.size());
}

void CFDataGetBytes(CFDataRef data, CFRange range, UInt8* buffer) {
  const platform::Data& bytes = Deref<DataObject>(data, "CFDataGetBytes").bytes;
  const auto size = static_cast<CFIndex>(bytes.size());
  if (range.location < 0 || range.length < 0 || range.length > size ||
      range.location > size - range.length) {
    platform::Misuse("CFDataGetBytes", "the range is outside the data");
  }
  std::copy_n(bytes.begin() + range.location, range.length, buffer);
}

CFTypeID CFDictionaryGetTypeID() { return static_cast<CFTypeID>(DictionaryObject::kType); }

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
  const auto& text = Deref<StringObject>(key, "CFDictionaryGetValue").text;
  return platform::Ref(Deref<DictionaryObject>(dictionary, "CFDictionaryGetValue").Get(text));
}

Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, const void* key,
                                      const void** value) {
  const void* found = CFDictionaryGetValue(dictionary, key);
  if (found == nullptr) return false;
  *value = found;
  return true;
}
