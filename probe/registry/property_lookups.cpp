#include "probe/registry/property_lookups.h"

#include <cstring>

static CFTypeRef SearchBothWays(io_registry_entry_t entry, CFStringRef key) {
  CFTypeRef value =
      IORegistryEntrySearchCFProperty(entry, kIOServicePlane, key, kCFAllocatorDefault,
                                      kIORegistryIterateRecursively | kIORegistryIterateParents);
  if (value != nullptr) return value;
  return IORegistryEntrySearchCFProperty(entry, kIOServicePlane, key, kCFAllocatorDefault,
                                         kIORegistryIterateRecursively);
}

// The value that the search found, if it is of that type, else null. The caller owns it.
static CFTypeRef SearchForType(io_registry_entry_t entry, CFStringRef key, CFTypeID type) {
  CFTypeRef value = SearchBothWays(entry, key);
  if (value == nullptr || CFGetTypeID(value) == type) return value;
  CFRelease(value);
  return nullptr;
}

void IOKitGetThisKeyCStr(io_registry_entry_t entry, CFStringRef key, char *text) {
  text[0] = '\0';
  CFTypeRef value = SearchForType(entry, key, CFStringGetTypeID());
  if (value == nullptr) return;

  char work[256];
  Boolean bConverted =
      CFStringGetCString((CFStringRef)value, work, sizeof work, kCFStringEncodingASCII);
  CFRelease(value);
  if (bConverted) strcpy(text, work);
}

void IOKitGetThisKeyCFNumber(io_registry_entry_t entry, CFStringRef key, CFNumberRef *number) {
  *number = (CFNumberRef)SearchForType(entry, key, CFNumberGetTypeID());
}

void IOKitGetThisKeyCFDictionary(io_registry_entry_t entry, CFStringRef key,
                                 CFDictionaryRef *dictionary) {
  *dictionary = (CFDictionaryRef)SearchForType(entry, key, CFDictionaryGetTypeID());
}
