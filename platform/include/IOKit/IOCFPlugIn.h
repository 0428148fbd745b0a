// Plug-in interfaces to user clients: the declarations that the probe uses, and no others. They are
// source-compatible with the platform's.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>

typedef SInt32 HRESULT;
typedef UInt32 ULONG;
typedef void *LPVOID;
typedef CFUUIDBytes REFIID;

#define S_OK ((HRESULT)0)

// An interface is a pointer to a pointer to its table of functions. Each function takes the
// interface as its first argument. The caller owns one reference to each interface that it gets.
// AddRef makes one more, Release gives one back, and both return how many there are then. When the
// last reference is given back, the interface is freed. To use it after that is misuse.
//
// QueryInterface stores another interface of the same object. A result other than S_OK means that
// there is none. Then it stores null if it does not know the interface, and otherwise nothing.
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

// Stores the plug-in of the user client of `service`, and a score of 0. `service` is borrowed.
// Fails, and leaves both outputs as they were, if the entry has no such user client, or if the
// device has a client already: it can have only one at a time.
kern_return_t IOCreatePlugInInterfaceForService(io_service_t service, CFUUIDRef pluginType,
                                                CFUUIDRef interfaceType,
                                                IOCFPlugInInterface ***theInterface,
                                                SInt32 *theScore);

// Gives back the caller's reference. The interfaces that the plug-in gave are freed, whatever
// references to them remain.
kern_return_t IODestroyPlugInInterface(IOCFPlugInInterface **interface);

}  // extern "C"
