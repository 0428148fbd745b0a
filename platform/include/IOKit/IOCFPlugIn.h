// Plug-in interfaces to user clients: the declarations that the probe calls,
// source-compatible with the platform's. Nothing that it does not call is here.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>

typedef SInt32 HRESULT;
typedef UInt32 ULONG;
typedef void *LPVOID;
typedef CFUUIDBytes REFIID;

#define S_OK ((HRESULT)0)

// An interface is a pointer to the pointer to its functions, whose first argument it is. The caller
// owns one reference to an interface that it is given; AddRef makes one more, Release gives one
// back, and both return how many there are then. With the last the interface is freed, and to use
// it is misuse. QueryInterface stores another interface of the same object. A result other than
// S_OK: it has none. For an interface that it does not know null is stored then, and else nothing.
typedef struct IOCFPlugInInterface {
  void *reserved;
  HRESULT (*QueryInterface)(void *self, REFIID iid, LPVOID *result);
  ULONG (*AddRef)(void *self);
  ULONG (*Release)(void *self);
} IOCFPlugInInterface;

// C244E858-109C-11D4-91D4-0050E4C6426F
#define kIOCFPlugInInterfaceID                                                                  \
  CFUUIDGetConstantUUIDWithBytes(0, 0xC2, 0x44, 0xE8, 0x58, 0x10, 0x9C, 0x11, 0xD4, 0x91, 0xD4, \
                                 0x00, 0x50, 0xE4, 0xC6, 0x42, 0x6F)

extern "C" {

// Stores the plug-in of the user client of `service`, which is borrowed, and a score of 0. Fails,
// with both as they were, where the entry has no such user client or another has opened it: a
// device has one client at a time.
kern_return_t IOCreatePlugInInterfaceForService(io_service_t service, CFUUIDRef pluginType,
                                                CFUUIDRef interfaceType,
                                                IOCFPlugInInterface ***theInterface,
                                                SInt32 *theScore);

// Gives back the caller's reference. The interfaces that the plug-in gave end, whatever references
// there are to them.
kern_return_t IODestroyPlugInInterface(IOCFPlugInInterface **interface);

}  // extern "C"
