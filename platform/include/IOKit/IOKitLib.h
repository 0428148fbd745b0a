// The device registry: the declarations of this framework that the probe calls,
// source-compatible with the platform's. Nothing that it does not call is here.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

typedef int kern_return_t;
typedef kern_return_t IOReturn;
typedef unsigned int mach_port_t;
typedef unsigned int io_object_t;
typedef io_object_t io_iterator_t;
typedef io_object_t io_registry_entry_t;
typedef io_object_t io_service_t;
typedef UInt32 IOOptionBits;
typedef char io_name_t[128];

#define kIOServicePlane "IOService"
#define kIOMasterPortDefault ((mach_port_t)0)

enum { kIOReturnSuccess = 0 };
enum { kIORegistryIterateRecursively = 1, kIORegistryIterateParents = 2 };

extern "C" {

CFMutableDictionaryRef IOServiceNameMatching(const char *name);
CFMutableDictionaryRef IOServiceMatching(const char *name);
kern_return_t IOServiceGetMatchingServices(mach_port_t masterPort, CFDictionaryRef matching,
                                           io_iterator_t *existing);
io_object_t IOIteratorNext(io_iterator_t iterator);
kern_return_t IOObjectRelease(io_object_t object);
kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry,
                                                CFMutableDictionaryRef *properties,
                                                CFAllocatorRef allocator, IOOptionBits options);
CFTypeRef IORegistryEntrySearchCFProperty(io_registry_entry_t entry, const io_name_t plane,
                                          CFStringRef key, CFAllocatorRef allocator,
                                          IOOptionBits options);

}  // extern "C"
