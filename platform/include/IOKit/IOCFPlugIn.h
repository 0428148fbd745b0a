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

kern_return_t IOCreatePlugInInterfaceForService(io_service_t service, CFUUIDRef pluginType,
                                                CFUUIDRef interfaceType,
                                                IOCFPlugInInterface ***theInterface,
                                                SInt32 *theScore);
kern_return_t IODestroyPlugInInterface(IOCFPlugInInterface **interface);

}  // extern "C"
