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

// Handles that a call returns or stores are the caller's to release, and 0 is none. Here no number
// is used again, and a handle that is dead or of the wrong kind is misuse. A result other than
// kIOReturnSuccess is a failure, which leaves the outputs as they were.

// What matches the entries of that name, or of that class, each compared whole; an empty text
// matches all. The caller's one reference goes to IOServiceGetMatchingServices. The platform gives
// null where there is no memory.
CFMutableDictionaryRef IOServiceNameMatching(const char *name);
CFMutableDictionaryRef IOServiceMatching(const char *name);

// Stores an iterator over the entries that match now, an entry before its children; 0 where none
// matches, which is no failure. Releases `matching`, also when it fails.
kern_return_t IOServiceGetMatchingServices(mach_port_t masterPort, CFDictionaryRef matching,
                                           io_iterator_t *existing);

// The next entry. 0 at the end, and then at every call, and for the iterator 0.
io_object_t IOIteratorNext(io_iterator_t iterator);

// Releases an entry or an iterator.
kern_return_t IOObjectRelease(io_object_t object);

// Stores a dictionary of the entry's own properties, the caller's to release.
kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry,
                                                CFMutableDictionaryRef *properties,
                                                CFAllocatorRef allocator, IOOptionBits options);

// The value of the property `key`, the caller's to release; null where there is none. Looked at are
// the entry alone; with the recursive option the entry and then what is below it, an entry before
// its children; with that of parents too, the entry and then what is above it, up to the root. The
// first that has the key counts, of whatever type its value is. In another plane than
// kIOServicePlane there is none.
CFTypeRef IORegistryEntrySearchCFProperty(io_registry_entry_t entry, const io_name_t plane,
                                          CFStringRef key, CFAllocatorRef allocator,
                                          IOOptionBits options);

}  // extern "C"
