// Toolbox calls: the declarations of this framework that the probe calls,
// source-compatible with the platform's. Nothing that it does not call is here.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

typedef UInt32 OSType;
typedef SInt16 OSErr;
typedef SInt32 OSStatus;
typedef long Size;
typedef char *Ptr;
typedef unsigned char Str255[256];
typedef unsigned char *StringPtr;
typedef const unsigned char *ConstStr255Param;
typedef UInt32 TextEncoding;
typedef struct PlatformICInstance *ICInstance;

extern "C" {

OSErr Gestalt(OSType selector, SInt32 *response);
OSStatus ICStart(ICInstance *instance, OSType signature);
Ptr NewPtr(Size byteCount);
void DisposePtr(Ptr pointer);
void BlockZero(void *destination, Size byteCount);
void CopyCStringToPascal(const char *source, Str255 destination);
TextEncoding GetApplicationTextEncoding(void);

}  // extern "C"
