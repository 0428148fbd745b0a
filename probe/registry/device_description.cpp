#include "probe/registry/device_description.h"

#include <cstring>

#include "probe/registry/property_lookups.h"
#include "probe/text/value_to_text.h"

enum { kBSDNameSize = 1024 };

static void CopyProductName(CFTypeRef value, char *productName) {
  char work[256];
  if (value == nullptr || CFGetTypeID(value) != CFStringGetTypeID()) return;
  if (!CFStringGetCString((CFStringRef)value, work, sizeof work, kCFStringEncodingASCII)) return;
  StripAllSpaces(work);
  strcpy(productName, work);
}

void IOKitUtilsGetDeviceProductNameCStr(io_registry_entry_t entry, char *productName) {
  productName[0] = '\0';
  CFDictionaryRef characteristics = nullptr;
  IOKitGetThisKeyCFDictionary(entry, CFSTR("Device Characteristics"), &characteristics);
  if (characteristics == nullptr) return;
  CopyProductName(CFDictionaryGetValue(characteristics, CFSTR("Product Name")), productName);
  CFRelease(characteristics);
}

void IOKitUtilsGetDeviceProductNamePStr(io_registry_entry_t entry, StringPtr productName) {
  char work[256];
  IOKitUtilsGetDeviceProductNameCStr(entry, work);
  CopyCStringToPascal(work, productName);
}

// The entry's own name, else that of a descendant. An ancestor's name would be another device's.
static CFTypeRef SearchForBSDName(io_registry_entry_t entry) {
  CFTypeRef name = IORegistryEntrySearchCFProperty(entry, kIOServicePlane, CFSTR("BSD Name"),
                                                   kCFAllocatorDefault, kIORegistryIterateParents);
  if (name != nullptr) return name;
  return IORegistryEntrySearchCFProperty(entry, kIOServicePlane, CFSTR("BSD Name"),
                                         kCFAllocatorDefault, kIORegistryIterateRecursively);
}

// A failed conversion may leave part of the name without a NUL, so that part is cut off.
static void ComposeRawDevicePath(CFStringRef name, char *bsdName) {
  strcpy(bsdName, "/dev/");
  strcat(bsdName, "r");
  size_t prefixLength = strlen(bsdName);
  if (!CFStringGetCString(name, bsdName + prefixLength, (CFIndex)(kBSDNameSize - prefixLength),
                          kCFStringEncodingASCII)) {
    bsdName[prefixLength] = '\0';
  }
}

void IOKitUtilsGetBDSName(io_registry_entry_t entry, char *bsdName) {
  bsdName[0] = '\0';
  CFTypeRef name = SearchForBSDName(entry);
  if (name == nullptr) return;
  if (CFGetTypeID(name) == CFStringGetTypeID()) ComposeRawDevicePath((CFStringRef)name, bsdName);
  CFRelease(name);
}

void IOKitUtilsGetDeviceSizeInBytes(io_registry_entry_t entry, SInt64 *capacityBytes) {
  BlockZero(capacityBytes, (Size)sizeof *capacityBytes);
  CFNumberRef size = nullptr;
  IOKitGetThisKeyCFNumber(entry, CFSTR("Size"), &size);
  if (size == nullptr) return;
  CFNumberGetValue(size, CFNumberGetType(size), capacityBytes);
  CFRelease(size);
}
