// The ATA S.M.A.R.T. user client: the declarations that the probe uses, and no others. They are
// source-compatible with the platform's.
#pragma once

#include <IOKit/IOCFPlugIn.h>

// The two blocks as the drive sends them. It is left to the caller to check their sums.
typedef struct ATASMARTData {
  UInt8 bytes[512];
} ATASMARTData;

typedef struct ATASMARTDataThresholds {
  UInt8 bytes[512];
} ATASMARTDataThresholds;

enum { kIOATAFeatureSMART = 0x20 };  // of a device's "ATA Features"

// The first four members are those of every interface. Each of the others sends the drive a command
// and waits for its end. In this layer the machine gives the answer. A result other than
// kIOReturnSuccess leaves the outputs as they were, unless the function's comment says more.
typedef struct IOATASMARTInterface {
  void *reserved;
  HRESULT (*QueryInterface)(void *self, REFIID iid, LPVOID *result);
  ULONG (*AddRef)(void *self);
  ULONG (*Release)(void *self);
  // 1 enables S.M.A.R.T. Any other value disables it, and the next three functions then fail.
  IOReturn (*SMARTEnableDisableOperations)(void *interface, Boolean enable);
  // Stores 1 if a threshold is exceeded, else 0.
  IOReturn (*SMARTReturnStatus)(void *interface, Boolean *exceededCondition);
  // Both write the 512 bytes of the block. If one fails, it may have written none, a part or all of
  // them.
  IOReturn (*SMARTReadData)(void *interface, ATASMARTData *data);
  IOReturn (*SMARTReadDataThresholds)(void *interface, ATASMARTDataThresholds *data);
  // Writes the first `inSize` of the 512 bytes, each word low byte first, and stores how many in
  // `outSize`. Fails for a size of 0 or above 512.
  IOReturn (*GetATAIdentifyData)(void *interface, void *buffer, UInt32 inSize, UInt32 *outSize);
} IOATASMARTInterface;

// 24514B7A-2804-11D6-8A02-003065704866
#define kIOATASMARTUserClientTypeID                                                             \
  CFUUIDGetConstantUUIDWithBytes(0, 0x24, 0x51, 0x4B, 0x7A, 0x28, 0x04, 0x11, 0xD6, 0x8A, 0x02, \
                                 0x00, 0x30, 0x65, 0x70, 0x48, 0x66)

// 08ABE21C-20D4-11D6-8DF6-0003935A76B2
#define kIOATASMARTInterfaceID                                                                  \
  CFUUIDGetConstantUUIDWithBytes(0, 0x08, 0xAB, 0xE2, 0x1C, 0x20, 0xD4, 0x11, 0xD6, 0x8D, 0xF6, \
                                 0x00, 0x03, 0x93, 0x5A, 0x76, 0xB2)
