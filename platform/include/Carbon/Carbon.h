// Toolbox calls: the declarations of this framework that the probe uses, and no others. They are
// source-compatible with the platform's.
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

// Stores the system's answer for `selector`. This layer only knows 'sysv', the system's version:
// 0xMMmb in binary-coded decimal. Any other selector fails and leaves `response` as it was.
OSErr Gestalt(OSType selector, SInt32 *response);

// Does nothing here and leaves `instance` as it was: the probe starts an instance but never uses
// it.
OSStatus ICStart(ICInstance *instance, OSType signature);

// Allocates a block of `byteCount` bytes, which the caller has to dispose of. The bytes are 0xA5,
// so that code cannot count on zeros. Null if there is no memory or the size is negative.
Ptr NewPtr(Size byteCount);

// Frees a block from NewPtr. Null, or a block that is disposed of already, is misuse.
void DisposePtr(Ptr pointer);

// Writes `byteCount` zero bytes.
void BlockZero(void *destination, Size byteCount);

// Writes a length byte and the characters of `source`, at most 256 bytes together and no NUL. A
// longer text is cut. `source` and `destination` may be the same buffer.
void CopyCStringToPascal(const char *source, Str255 destination);

// The encoding of 8-bit text, the same as the system's.
TextEncoding GetApplicationTextEncoding(void);

}  // extern "C"
