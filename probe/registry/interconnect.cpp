#include "probe/registry/interconnect.h"

#include <Carbon/Carbon.h>

#include <cstdio>
#include <cstring>

#include "probe/registry/property_lookups.h"
#include "probe/text/value_to_text.h"

enum { kTextSize = 256 };

// The most bytes whose hexadecimal digits, and a NUL, fit into a text.
enum { kMaxBusIdBytes = (kTextSize - 1) / 2 };

static const char kUnknownBus[] = "???";

// Writes the value's ASCII text. Returns false if the value is missing, is no string or does not
// convert; `text` must not be used then.
static Boolean GetText(CFTypeRef value, char *text) {
  return value != nullptr && CFGetTypeID(value) == CFStringGetTypeID() &&
         CFStringGetCString((CFStringRef)value, text, kTextSize, kCFStringEncodingASCII);
}

// Searches only the entry and its ancestors. The caller releases the value that is found.
static CFTypeRef SearchUpwards(io_registry_entry_t entry, CFStringRef key) {
  return IORegistryEntrySearchCFProperty(entry, kIOServicePlane, key, kCFAllocatorDefault,
                                         kIORegistryIterateRecursively | kIORegistryIterateParents);
}

// Writes the number's text. It is empty if the number cannot be converted or its text does not fit.
static void NumberToText(CFNumberRef number, char *text, Boolean bHexadecimal) {
  char work[kNumberTextSize];
  work[0] = '\0';
  ConvertCFNumberToCStr(number, work, bHexadecimal);
  strcpy(text, strlen(work) < kTextSize ? work : "");
}

// Finds the number `key` around the entry and writes its text. False if there is none.
static Boolean GetNumberText(io_registry_entry_t entry, CFStringRef key, char *text,
                             Boolean bHexadecimal) {
  CFNumberRef number = nullptr;
  IOKitGetThisKeyCFNumber(entry, key, &number);
  if (number == nullptr) return false;
  NumberToText(number, text, bHexadecimal);
  CFRelease(number);
  return true;
}

// Writes the interconnect, the label and the number `key` around the entry. Without that number it
// writes nothing.
static void DescribeByNumber(io_registry_entry_t entry, const char *interconnect, const char *label,
                             CFStringRef key, Boolean bHexadecimal, char *info) {
  char text[kTextSize];
  if (!GetNumberText(entry, key, text, bHexadecimal)) return;
  sprintf(info, "%s%s%s", interconnect, label, text);
}

// For SCSI. If there is an identifier, no target is looked for, even if its type is wrong.
static void DescribeTarget(io_registry_entry_t entry, CFDictionaryRef protocol,
                           const char *interconnect, char *info) {
  static const char kLabel[] = ":  ID = ";
  CFTypeRef identifier = CFDictionaryGetValue(protocol, CFSTR("SCSI Target Identifier"));
  if (identifier == nullptr) {
    DescribeByNumber(entry, interconnect, kLabel, CFSTR("SCSI Target"), false, info);
  } else if (CFGetTypeID(identifier) == CFNumberGetTypeID()) {
    char target[kTextSize];
    NumberToText((CFNumberRef)identifier, target, false);
    sprintf(info, "%s%s%s", interconnect, kLabel, target);
  }
}

static void AppendLocation(CFDictionaryRef protocol, char *info) {
  char location[kTextSize];
  if (!GetText(CFDictionaryGetValue(protocol, CFSTR("Physical Interconnect Location")), location)) {
    return;
  }
  strcat(info, " ");
  strcat(info, location);
}

static void BusIdToText(CFTypeRef busId, char *bus) {
  if (CFGetTypeID(busId) != CFDataGetTypeID() ||
      CFDataGetLength((CFDataRef)busId) > kMaxBusIdBytes) {
    strcpy(bus, kUnknownBus);
    return;
  }
  ConvertCFDataToCStr((CFDataRef)busId, bus);
  StripLeadingZeros(bus);
  if (bus[0] == '\0') strcpy(bus, "0");
}

// False if the data's bytes cannot be converted to text.
static Boolean LocationDataToText(CFDataRef data, char *bus) {
  CFStringRef location = CFStringCreateFromExternalRepresentation(kCFAllocatorDefault, data,
                                                                  CFStringGetSystemEncoding());
  if (location == nullptr) return false;
  Boolean bConverted = CFStringGetCString(location, bus, kTextSize, GetApplicationTextEncoding());
  CFRelease(location);
  return bConverted;
}

static void LocationToText(CFTypeRef location, char *bus) {
  if (CFGetTypeID(location) != CFDataGetTypeID()) {
    strcpy(bus, kUnknownBus);
    return;
  }
  if (!LocationDataToText((CFDataRef)location, bus) || bus[0] == '\0') strcpy(bus, "0");
}

// Writes the bus or location of an ATA device. False if the registry has neither.
static Boolean GetBusText(io_registry_entry_t entry, char *bus) {
  CFTypeRef busId = SearchUpwards(entry, CFSTR("AAPL,bus-id"));
  if (busId != nullptr) {
    BusIdToText(busId, bus);
    CFRelease(busId);
    return true;
  }
  CFTypeRef location = SearchUpwards(entry, CFSTR("io-device-location"));
  if (location == nullptr) return false;
  LocationToText(location, bus);
  CFRelease(location);
  return true;
}

static void DescribeBus(const char *interconnect, const char *bus, const char *unit, char *info) {
  if (strstr(bus, "Channel") != nullptr) {
    sprintf(info, "Serial ATA %s", bus);
  } else {
    sprintf(info, "%s Bus %s: Dev %s", interconnect, bus, unit);
  }
}

// A generic device is described by its socket, if that is known.
static void DescribeSocket(io_registry_entry_t entry, char *info) {
  char socket[kTextSize];
  CFTypeRef value = SearchUpwards(entry, CFSTR("socket type"));
  if (value == nullptr) return;
  if (GetText(value, socket)) strcpy(info, socket);
  CFRelease(value);
}

// A device is generic if its type is "Generic" or any part of that word, even the empty text.
static void DescribeDeviceType(io_registry_entry_t entry, char *info) {
  char deviceType[kTextSize];
  CFTypeRef value = SearchUpwards(entry, CFSTR("device-type"));
  if (value == nullptr) return;
  Boolean bUsable = GetText(value, deviceType);
  CFRelease(value);
  if (!bUsable) return;
  if (strstr("Generic", deviceType) != nullptr) {
    DescribeSocket(entry, info);
  } else {
    sprintf(info, "device-type: %s", deviceType);
  }
}

// For ATA and ATAPI. If nothing else is found, the description is the interconnect's own text.
static void DescribeATADevice(io_registry_entry_t entry, CFDictionaryRef protocol,
                              const char *interconnect, char *info) {
  char unit[kTextSize];
  char bus[kTextSize];
  char channel[kTextSize];
  strcpy(info, interconnect);
  if (!GetNumberText(entry, CFSTR("unit number"), unit, false)) {
    AppendLocation(protocol, info);
  } else if (GetBusText(entry, bus)) {
    DescribeBus(interconnect, bus, unit, info);
  } else if (GetNumberText(entry, CFSTR("Channel"), channel, false)) {
    sprintf(info, "%s%s", "Channel: ", channel);
  } else {
    DescribeDeviceType(entry, info);
  }
}

// The first of these words that is part of the interconnect decides.
static void DescribeInterconnect(io_registry_entry_t entry, CFDictionaryRef protocol, char *info) {
  char interconnect[kTextSize];
  if (!GetText(CFDictionaryGetValue(protocol, CFSTR("Physical Interconnect")), interconnect)) {
    return;
  }
  if (strstr(interconnect, "SCSI") != nullptr) {
    DescribeTarget(entry, protocol, interconnect, info);
  } else if (strstr(interconnect, "ATA") != nullptr) {
    DescribeATADevice(entry, protocol, interconnect, info);
  } else if (strstr(interconnect, "FireWire") != nullptr) {
    DescribeByNumber(entry, interconnect, ":  GUID = ", CFSTR("GUID"), true, info);
  } else if (strstr(interconnect, "USB") != nullptr) {
    DescribeByNumber(entry, interconnect, ":  locationID = ", CFSTR("locationID"), false, info);
  } else if (strstr(interconnect, "Fibre Channel Interface") != nullptr) {
    strcpy(info, interconnect);
  }
}

void IOKitUtilsGetDeviceInterfaceInfo(io_registry_entry_t entry, char *info) {
  info[0] = '\0';
  CFDictionaryRef protocol = nullptr;
  IOKitGetThisKeyCFDictionary(entry, CFSTR("Protocol Characteristics"), &protocol);
  if (protocol == nullptr) return;
  DescribeInterconnect(entry, protocol, info);
  CFRelease(protocol);
  CopyCStringToPascal(info, (StringPtr)info);
}
