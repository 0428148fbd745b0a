// The device registry: the declarations of this framework that the probe uses, and no others. They
// are source-compatible with the platform's.
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

// The caller has to release each handle that a call returns or stores. 0 is no handle. This layer
// uses no number twice, and to pass a handle that is dead or of the wrong kind is misuse. A result
// other than kIOReturnSuccess is a failure, and leaves the outputs as they were.

// A dictionary that matches the entries of that name, or of that class. The whole text is compared,
// and an empty text matches all entries. The caller's one reference goes to
// IOServiceGetMatchingServices. The platform returns null if there is no memory.
CFMutableDictionaryRef IOServiceNameMatching(const char *name);
CFMutableDictionaryRef IOServiceMatching(const char *name);

// Stores an iterator over the entries that match now, each entry before its children. Stores 0 if
// none matches, which is no failure. Releases `matching`, also when it fails.
kern_return_t IOServiceGetMatchingServices(mach_port_t masterPort, CFDictionaryRef matching,
                                           io_iterator_t *existing);

// The next entry. Returns 0 at the end, at every call after that, and for the iterator 0.
io_object_t IOIteratorNext(io_iterator_t iterator);

// Releases an entry or an iterator.
kern_return_t IOObjectRelease(io_object_t object);

// Stores a dictionary of the entry's own properties, which the caller has to release.
kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry,
                                                CFMutableDictionaryRef *properties,
                                                CFAllocatorRef allocator, IOOptionBits options);

// The value of the property `key`, which the caller has to release. Null if there is none.
//
// Without options it searches only the entry. With the recursive option it searches the entry and
// then the entries below, each before its children. With the option of parents as well it searches
// the entry and then the entries above, up to the root. The first entry that has the key counts,
// whatever the type of its value. In a plane other than kIOServicePlane it finds nothing.
CFTypeRef IORegistryEntrySearchCFProperty(io_registry_entry_t entry, const io_name_t plane,
                                          CFStringRef key, CFAllocatorRef allocator,
                                          IOOptionBits options);

}  // extern "C"
