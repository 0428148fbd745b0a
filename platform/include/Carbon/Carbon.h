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

// Stores what the system tells under `selector`. Here 'sysv' is known alone: the system's version,
// 0xMMmb in binary-coded decimal. Another fails, and leaves `response` as it was.
OSErr Gestalt(OSType selector, SInt32 *response);

// Does nothing here, and leaves `instance` as it was: the probe starts one for form's sake.
OSStatus ICStart(ICInstance *instance, OSType signature);

// A block of so many bytes, the caller's to dispose of. They are 0xA5, so that nobody counts on
// zeros. Null where there is no memory, or the size is negative.
Ptr NewPtr(Size byteCount);

// Frees a block that NewPtr gave. Null, or one that is disposed of already, is misuse.
void DisposePtr(Ptr pointer);

// Writes so many zero bytes.
void BlockZero(void *destination, Size byteCount);

// Writes a length byte and as many characters of `source`, at most 256 bytes together and no NUL:
// a longer text is cut. The two may be one buffer.
void CopyCStringToPascal(const char *source, Str255 destination);

// The encoding of 8-bit text, the same as the system's.
TextEncoding GetApplicationTextEncoding(void);

}  // extern "C"
